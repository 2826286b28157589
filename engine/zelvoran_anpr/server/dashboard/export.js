// The plates in forms that other programs read.

const COLUMNS = [
  "file", "plate_text", "confidence", "left", "top", "right", "bottom",
  "region", "mmc_make", "mmc_model", "mmc_color",
];

function flat(plate) {
  const [left, top, right, bottom] = plate.bbox;
  return { ...plate, left, top, right, bottom };
}

function cell(value) {
  // A leading sign would make a spreadsheet take the text for a formula.
  const text = String(value ?? "").replace(/^([=+\-@\t\r])(?!\d)/, "'$1");
  return /[",\r\n]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text;
}

export function asCsv(plates) {
  const rows = plates.map(flat).map((plate) => COLUMNS.map((name) => cell(plate[name])));
  return [COLUMNS, ...rows].map((row) => row.join(",")).join("\r\n") + "\r\n";
}

export const asJson = (plates) => JSON.stringify(plates, null, 2) + "\n";

export const asText = (plates) =>
  plates.map((plate) => `${plate.plate_text}\t${plate.confidence}\t${plate.file}`).join("\n");

export function save(name, type, text) {
  const link = document.createElement("a");
  link.href = URL.createObjectURL(new Blob([text], { type }));
  link.download = name;
  link.click();
  URL.revokeObjectURL(link.href);
}
