// Takes photos from the user, has them read two at a time, and shows what was found.
import { readPhoto } from "./api.js";
import { asCsv, asJson, asText, save } from "./export.js";
import { byId } from "./page.js";
import { photoCard, plateRow } from "./plates.js";

const AT_ONCE = 2;
const found = [];
let batch = newBatch();
let afterwards = () => {};

// What was given since the page was opened or cleared; an earlier one's answers are not wanted.
function newBatch() {
  return { queue: [], total: 0, finished: 0, workers: 0, ended: new AbortController() };
}

export function setUpPhotos(onRead) {
  afterwards = onRead;
  const input = byId("files");
  input.addEventListener("change", () => {
    add(input.files);
    input.value = ""; // so that the same photo can be chosen again
  });
  setUpDrop(byId("drop"));
  byId("copy").addEventListener("click", copy);
  byId("save-csv").addEventListener("click", () => save("plates.csv", "text/csv", asCsv(found)));
  byId("save-json").addEventListener("click", () =>
    save("plates.json", "application/json", asJson(found)));
  byId("clear").addEventListener("click", clear);
}

function setUpDrop(zone) {
  // Dropped beside the zone, a photo would replace the page.
  for (const type of ["dragover", "drop"]) {
    window.addEventListener(type, (event) => event.preventDefault());
  }
  zone.addEventListener("dragover", () => zone.classList.add("over"));
  zone.addEventListener("dragleave", () => zone.classList.remove("over"));
  zone.addEventListener("drop", (event) => {
    zone.classList.remove("over");
    add(event.dataTransfer.files);
  });
}

function add(files) {
  batch.queue.push(...files);
  batch.total += files.length;
  showProgress();
  // Whoever begins takes its first photo at once.
  while (batch.workers < AT_ONCE && batch.queue.length) work(batch);
}

async function work(mine) {
  mine.workers += 1;
  while (mine.queue.length) {
    await read(mine.queue.shift(), mine);
    if (mine !== batch) return;
    mine.finished += 1;
    showProgress();
  }
  mine.workers -= 1;
  afterwards();
}

async function read(file, mine) {
  const withMmc = byId("with-mmc").checked && !byId("with-mmc").disabled;
  byId("results").hidden = false;
  try {
    const answer = await readPhoto(file, withMmc, mine.ended.signal);
    if (mine === batch) show(file, answer);
  } catch (error) {
    if (mine === batch) byId("photos").prepend(photoCard(file, null, error.message));
  }
}

function show(file, answer) {
  const card = photoCard(file, answer, "");
  byId("photos").prepend(card);
  const rows = answer.results.map((plate, index) => {
    found.push({ file: file.name, region: answer.region, ...plate });
    return plateRow(file.name, answer.region, plate, card, index);
  });
  byId("plates").prepend(...rows);
}

function showProgress() {
  const { total, finished } = batch;
  const open = total - finished;
  byId("progress").textContent = open
    ? `Reading: ${finished} of ${total} photos done`
    : `${total === 1 ? "1 photo" : `${total} photos`} read, plates found: ${found.length}`;
}

async function copy() {
  await navigator.clipboard.writeText(asText(found));
  byId("progress").textContent = "Copied.";
}

function clear() {
  batch.ended.abort();
  batch = newBatch();
  for (const image of byId("photos").querySelectorAll("img")) URL.revokeObjectURL(image.src);
  byId("photos").replaceChildren();
  byId("plates").replaceChildren();
  found.length = 0;
  byId("results").hidden = true;
  byId("progress").textContent = "";
  byId("files").focus();
}
