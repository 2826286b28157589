// The sign-in page: takes the token from the link or the form and gets the session's cookie.
const form = document.getElementById("form");
const field = document.getElementById("token");
const note = document.getElementById("note");

async function signIn(token) {
  note.textContent = "";
  const answer = await fetch("/api/session", {
    method: "POST",
    headers: { "Content-Type": "application/json" },
    body: JSON.stringify({ token }),
  });
  if (answer.ok) {
    location.replace("/");
    return;
  }
  const { error } = await answer.json();
  note.textContent = error;
  field.select();
}

function attempt(token) {
  signIn(token).catch(() => {
    note.textContent = "The server does not answer.";
  });
}

function fromLink() {
  const token = /^#t=(.+)$/.exec(location.hash)?.[1]; // as it stands: nothing in it is encoded
  if (!token) return;
  history.replaceState(null, "", location.pathname); // the token is not left in the address
  attempt(token);
}

form.addEventListener("submit", (event) => {
  event.preventDefault();
  attempt(field.value.trim());
});
window.addEventListener("hashchange", fromLink);
fromLink();
