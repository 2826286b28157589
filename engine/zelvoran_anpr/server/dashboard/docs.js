// Shows the description of the API on this page; requests go out with the session's cookie.
window.SwaggerUIBundle({
  url: "/openapi.json",
  dom_id: "#swagger-ui",
  deepLinking: true,
  tryItOutEnabled: true,
  validatorUrl: null,
});
