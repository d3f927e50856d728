// A typical program that uses sharp or @napi-rs/image: Lanczos, metadata kept where possible, several files at once.
// Usage: node node_peer.mjs sharp|napi MODULES WIDTH HEIGHT jpeg|png|tiff|gif QUALITY OUT IN_FLIGHT FILE...
import { readFile, writeFile } from 'node:fs/promises';
import { createRequire } from 'node:module';
import { basename, extname, join, resolve } from 'node:path';

const [library, modules, widthText, heightText, form, qualityText, out, inFlight, ...files] = process.argv.slice(2);
const require = createRequire(resolve(modules, 'x.js'));
const [width, height, quality] = [widthText, heightText, qualityText].map(Number);
const suffixes = { jpeg: 'jpg', png: 'png', tiff: 'tif', gif: 'gif' };

function sharpConverter() {
  const sharp = require('sharp');
  const options = { jpeg: { quality }, png: {}, tiff: { compression: 'none' }, gif: {} }[form];
  return (from, to) =>
    sharp(from).resize({ width, height, fit: 'inside' }).keepMetadata().toFormat(form, options).toFile(to);
}

function napiConverter() {
  const { Transformer, FastResizeFilter, ResizeFit } = require('@napi-rs/image');
  return async (from, to) => {
    const picture = new Transformer(await readFile(from));
    picture.fastResize({ width, height, filter: FastResizeFilter.Lanczos3, fit: ResizeFit.Inside });
    await writeFile(to, form === 'jpeg' ? await picture.jpeg(quality) : await picture[form]());
  };
}

const convert = { sharp: sharpConverter, napi: napiConverter }[library]();
let next = 0;
async function work() {
  while (next < files.length) {
    const from = files[next++];
    await convert(from, join(out, `${basename(from, extname(from))}.${suffixes[form]}`));
  }
}
await Promise.all(Array.from({ length: Number(inFlight) }, work));
