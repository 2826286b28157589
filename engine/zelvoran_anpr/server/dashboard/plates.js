// One photo with its plates marked, and the table's row of each plate; the two light up together.
import { element } from "./page.js";

const SVG = "http://www.w3.org/2000/svg";

function box(plate, index, answer) {
  const [left, top, right, bottom] = plate.bbox;
  const rectangle = document.createElementNS(SVG, "rect");
  const attributes = {
    x: left, y: top, width: right - left, height: bottom - top,
    rx: answer.width / 300, "data-plate": index,
  };
  for (const [name, value] of Object.entries(attributes)) rectangle.setAttribute(name, value);
  return rectangle;
}

function overlay(answer) {
  const svg = document.createElementNS(SVG, "svg");
  svg.setAttribute("viewBox", `0 0 ${answer.width} ${answer.height}`);
  svg.setAttribute("aria-hidden", "true");
  svg.append(...answer.results.map((plate, index) => box(plate, index, answer)));
  return svg;
}

function summary(answer, problem) {
  if (problem) return element("span", { className: "problem" }, problem);
  const texts = answer.results.map((plate) => plate.plate_text);
  const line = texts.length ? texts.join(", ") : "No plates found";
  return element("span", {}, `${line} · ${Math.round(answer.processing_sec * 1000)} ms`);
}

export function photoCard(file, answer, problem) {
  const image = element("img", {
    src: URL.createObjectURL(file),
    alt: answer ? `${file.name}, plates: ${answer.results.length}` : file.name,
  });
  const picture = element("div", { className: "picture" }, image);
  // A browser cannot draw every format that the server reads.
  image.addEventListener("error", () => picture.replaceChildren("No preview in this browser"));
  if (answer) picture.append(overlay(answer));
  const notes = [element("strong", {}, file.name), summary(answer, problem)];
  if (answer?.mmc_error) notes.push(element("span", { className: "problem" }, answer.mmc_error));
  return element("li", {}, picture, element("div", { className: "caption" }, ...notes));
}

export function plateRow(name, region, plate, card, index) {
  const vehicle = [plate.mmc_color, plate.mmc_make, plate.mmc_model].filter(Boolean).join(" ");
  const copy = element("button", { type: "button", className: "plain" }, "Copy");
  copy.setAttribute("aria-label", `Copy ${plate.plate_text}`);
  copy.addEventListener("click", () => navigator.clipboard.writeText(plate.plate_text));
  const row = element(
    "tr",
    {},
    element("td", {}, element("span", { className: "plate" }, plate.plate_text)),
    element("td", { className: "number" }, `${plate.confidence.toFixed(1)} %`),
    element("td", { className: "file" }, name),
    element("td", {}, region),
    element("td", {}, vehicle || "–"),
    element("td", {}, copy),
  );
  lightUp(row, card, index);
  return row;
}

function lightUp(row, card, index) {
  const mark = card.querySelector(`rect[data-plate="${index}"]`);
  const set = (on) => () => mark.classList.toggle("lit", on);
  for (const type of ["mouseenter", "focusin"]) row.addEventListener(type, set(true));
  for (const type of ["mouseleave", "focusout"]) row.addEventListener(type, set(false));
}
