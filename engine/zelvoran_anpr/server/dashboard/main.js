// Puts the dashboard's parts together.
import { call } from "./api.js";
import { byId, showMessage } from "./page.js";
import { setUpPhotos } from "./photos.js";
import { loadRegions } from "./region.js";
import { refresh } from "./server.js";

const REFRESH_MS = 5000;

async function update() {
  try {
    await refresh();
    showMessage("");
  } catch {
    byId("state").textContent = "offline";
    byId("state").dataset.state = "bad";
    showMessage("The server does not answer. Start it with: zv-anpr server start --daemon");
  }
}

async function signOut() {
  await call("/api/session", { method: "DELETE" });
  location.replace("/login");
}

byId("sign-out").addEventListener("click", () => signOut().catch((e) => showMessage(e.message)));
setUpPhotos(update);
await update();
loadRegions().catch((error) => showMessage(error.message));
setInterval(() => document.hidden || update(), REFRESH_MS);
