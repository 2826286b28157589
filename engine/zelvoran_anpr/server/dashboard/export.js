// The plates in forms that other programs read.

const COLUMNS = [
  "file", "plate_text", "confidence", "left", "top", "right", "bottom",
  "region", "mmc_make", "mmc_model", "mmc_color",
];

function flat(plate) {
  const [left, top, right, bottom] = plate.bbox;
  return { ...plate, left, top, right, bottom };
}

const NUMBER = /^-?\d+(\.\d+)?$/;

// A spreadsheet takes a text that begins so for a formula, and runs it; numbers are none.
function harmless(value) {
  const text = String(value ?? "");
  return /^[\s]*[=+\-@|%]/.test(text) && !NUMBER.test(text) ? `'${text}` : text;
}

function cell(value) {
  const text = harmless(value);
  return /[",\r\n]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text;
}

export function asCsv(plates) {
  const rows = plates.map(flat).map((plate) => COLUMNS.map((name) => cell(plate[name])));
  return [COLUMNS, ...rows].map((row) => row.join(",")).join("\r\n") + "\r\n";
}

export const asJson = (plates) => JSON.stringify(plates, null, 2) + "\n";

const oneLine = (value) => harmless(value).replaceAll(/[\t\r\n]+/g, " ");

export const asText = (plates) =>
  plates.map((plate) =>
    [plate.plate_text, plate.confidence, plate.file].map(oneLine).join("\t")).join("\n");

export function save(name, type, text) {
  const link = document.createElement("a");
  link.href = URL.createObjectURL(new Blob([text], { type }));
  link.download = name;
  link.click();
  URL.revokeObjectURL(link.href);
}
