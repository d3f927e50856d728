// Makes a WebP file of at most 1200 pixels from a picture, with Node and the package koffi from npm.
// Usage: node convert.mjs PICTURE RESULT
import koffi from "koffi";
import { writeFileSync } from "node:fs";

const library = koffi.load("libkestrine.so.0");
koffi.opaque("kestrine_picture");
const Buffer_ = koffi.struct("kestrine_buffer", { bytes: "void *", length: "size_t" });
const errorText = library.func("const char *kestrine_error_text()");
const openPath = library.func("int kestrine_open_path(const char *path, _Out_ kestrine_picture **picture)");
const convertToMemory = library.func(
  "int kestrine_convert_to_memory(kestrine_picture *picture, const char *options, _Out_ kestrine_buffer *result)");
const free = library.func("void kestrine_free(_Inout_ kestrine_buffer *buffer)");
const close = library.func("void kestrine_close(kestrine_picture *picture)");

function check(status) {
  if (status !== 0) throw new Error(errorText());
}

/** The bytes of the result. */
function converted(path, options) {
  const picture = [null];
  check(openPath(path, picture));
  const result = {};
  try {
    check(convertToMemory(picture[0], JSON.stringify(options), result));
    return Buffer.from(koffi.decode(result.bytes, koffi.array("uint8_t", result.length, "Typed")));
  } finally {
    if (result.bytes) free(result);
    close(picture[0]);
  }
}

const [, , source, target] = process.argv;
writeFileSync(target, converted(source, { longest: 1200, format: "webp" }));
