// Health, quota and recent requests, as the server tells them.
import { call } from "./api.js";
import { byId, element, showFacts } from "./page.js";

export function duration(seconds) {
  if (seconds < 60) return `${Math.floor(seconds)} s`;
  if (seconds < 3600) return `${Math.floor(seconds / 60)} min`;
  const hours = Math.floor(seconds / 3600);
  return hours < 48 ? `${hours} h` : `${Math.floor(hours / 24)} days`;
}

function showHealth(health) {
  const state = byId("state");
  state.textContent = health.status === "ok" ? "ready" : health.status;
  state.dataset.state = health.status === "ok" ? "good" : "wait";
  const check = health.health_check;
  showFacts(byId("health"), [
    ["Version", health.version],
    ["Detector", `${health.detector_version} (${health.sdk_version})`],
    ["OCR", health.ocr_version],
    ["Uptime", duration(health.uptime)],
    ["Threads", `${health.threads} (${check.waiting_or_running} busy or waiting)`],
    ["Photos read", health.requests_served.toLocaleString()],
    ["Errors", health.errors.toLocaleString()],
    ["Memory", `${Math.round(check.memory_mb)} MB`],
  ]);
}

function showMmc(mmc) {
  showFacts(byId("mmc"), [
    ["Backend", mmc.backend],
    ["State", mmc.available ? "available" : "unavailable"],
  ]);
  const limited = mmc.available && mmc.mmc_daily_limit > 0; // a text when there is no limit
  byId("quota").hidden = !limited;
  byId("quota-bar").max = limited ? mmc.mmc_daily_limit : 1;
  byId("quota-bar").value = limited ? mmc.mmc_calls_today : 0;
  byId("quota-text").textContent =
    `${mmc.mmc_calls_today} of ${mmc.mmc_daily_limit}, ${mmc.mmc_remaining} left`;
  byId("mmc-error").textContent = mmc.error ?? "";
  byId("mmc-error").hidden = !mmc.error;
  byId("with-mmc").disabled = !mmc.available;
}

function recentLine(request) {
  const time = new Date(request.time).toLocaleTimeString();
  const plates = request.plates.length ? request.plates.join(", ") : "no plates";
  return element(
    "li",
    {},
    element("span", { className: "recent-plates" }, plates),
    element(
      "span",
      { className: "quiet" },
      `${time} · ${request.file || "unnamed"} · ${Math.round(request.processing_sec * 1000)} ms`,
    ),
  );
}

export async function refresh() {
  const [health, mmc, recent] = await Promise.all([
    call("/api/health?detailed=true"),
    call("/api/mmc/status"),
    call("/api/recent?count=10"),
  ]);
  showHealth(health);
  showMmc(mmc);
  byId("recent").replaceChildren(...recent.requests.map(recentLine));
  byId("recent-none").hidden = recent.requests.length > 0;
}
