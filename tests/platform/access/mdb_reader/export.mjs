// Prints tables of an Access-format file as mdb-reader has them, in the form that mdb-export is
// asked for: node export.mjs FOLDER-OF-MODULES FILE TABLE
import { readFileSync, writeSync } from "node:fs";
import { join } from "node:path";
import { pathToFileURL } from "node:url";

const [modules, file, name] = process.argv.slice(2);
const entry = join(modules, "mdb-reader", "lib", "node", "index.js");
const { default: MDBReader } = await import(pathToFileURL(entry));

function text(value) {
  if (value === null || value === undefined || value === "") return "<null>";
  if (typeof value === "boolean") return value ? "1" : "0";
  if (value instanceof Date) return value.toISOString().slice(0, 19).replace("T", " ");
  if (Buffer.isBuffer(value)) return value.toString("hex").toUpperCase();
  return String(value);
}

const table = new MDBReader(readFileSync(file)).getTable(name);
const names = table.getColumnNames();
const records = [names, ...table.getData().map((row) => names.map((column) => text(row[column])))];
const quoted = (field) => `"${field.replaceAll('"', '""')}"`;
writeAll(records.map((record) => record.map(quoted).join(",") + "\n").join(""));

function writeAll(output) {
  const bytes = Buffer.from(output);
  for (let at = 0; at < bytes.length; ) at += writeSync(1, bytes, at);
}
