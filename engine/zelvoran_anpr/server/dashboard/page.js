// Builds elements from text that may hold anything: nothing is ever read as HTML.

export const byId = (id) => document.getElementById(id);

export function element(name, properties = {}, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(properties)) {
    if (key in made) made[key] = value;
    else made.setAttribute(key, value);
  }
  made.append(...children);
  return made;
}

export function showFacts(list, facts) {
  list.replaceChildren(
    ...facts.flatMap(([name, value]) => [
      element("dt", {}, name),
      element("dd", {}, String(value)),
    ]),
  );
}

export function showMessage(text) {
  const line = byId("message");
  line.textContent = text;
  line.hidden = !text;
}
