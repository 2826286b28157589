// The default region: shows it, and changes it until the server ends.
import { call, put } from "./api.js";
import { byId, element } from "./page.js";

const GROUP_LABELS = {
  univ: "Everywhere",
  eup: "Europe+ (also Asia, Africa, Oceania)",
  na: "North America",
  kr: "Korea",
  cn: "China",
  jp: "Japan",
};

function options(groups, countries) {
  const byName = [...countries].sort((a, b) => a.name.localeCompare(b.name));
  return [
    element(
      "optgroup",
      { label: "Groups" },
      ...groups.map(({ code, name }) =>
        element("option", { value: name }, GROUP_LABELS[code] ?? name)),
    ),
    element(
      "optgroup",
      { label: "Countries" },
      ...byName.map(({ code, name }) => element("option", { value: code }, `${name} (${code})`)),
    ),
  ];
}

async function change(event) {
  event.preventDefault();
  const note = byId("region-note");
  try {
    const answer = await put("/api/region", { region: byId("region").value });
    note.textContent = answer.success
      ? `Changed from ${answer.previous_region} to ${answer.current_region}, until the server ends.`
      : answer.error;
  } catch (error) {
    note.textContent = error.message;
  }
}

export async function loadRegions() {
  const [{ groups, countries }, current] = await Promise.all([
    call("/api/regions"),
    call("/api/region"),
  ]);
  const select = byId("region");
  select.replaceChildren(...options(groups, countries));
  select.value = current.active_region;
  byId("region-form").addEventListener("submit", change);
}
