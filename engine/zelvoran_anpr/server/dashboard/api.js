// Calls the server; a browser that is not signed in is sent to the sign-in page.

export class Refused extends Error {
  constructor(status, text, retryAfter) {
    super(text);
    this.status = status;
    this.retryAfter = retryAfter;
  }
}

export async function call(path, options = {}) {
  const answer = await fetch(path, options);
  if (answer.status === 401) {
    location.replace("/login");
    return new Promise(() => {}); // nothing may go on: the page is being left
  }
  const body = await answer.json().catch(() => ({}));
  if (answer.ok) return body;
  const text = body.error ?? `The server answered with status ${answer.status}.`;
  throw new Refused(answer.status, text, Number(answer.headers.get("Retry-After")) || 1);
}

export function put(path, content) {
  return call(path, {
    method: "PUT",
    headers: { "Content-Type": "application/json" },
    body: JSON.stringify(content),
  });
}

function pause(seconds, signal) {
  return new Promise((resolve, reject) => {
    setTimeout(resolve, seconds * 1000);
    signal.addEventListener("abort", () => reject(signal.reason), { once: true });
  });
}

// Uploads one photo; a busy server is asked again when it said to, until `signal` ends it.
export async function readPhoto(file, withMmc, signal) {
  const form = new FormData();
  form.append("image", file);
  const path = withMmc ? "/api/anpr/mmc" : "/api/anpr";
  for (;;) {
    try {
      return await call(path, { method: "POST", body: form, signal });
    } catch (error) {
      if (error.status !== 429 && error.status !== 503) throw error;
      await pause(error.retryAfter, signal);
    }
  }
}
