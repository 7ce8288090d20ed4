// The chart as a picture to save: the plot with a title and the names of the curves.
import { cut } from './format.js';

const kLine = 22; // px
const kMargin = 8;
const kKey = 17; // px before a name, for its colour
const kLongest = 60; // characters of a name

export function savePicture(plot, title, variables, name) {
  const scale = devicePixelRatio || 1;
  const source = plot.ctx.canvas;
  const canvas = document.createElement('canvas');
  const context = canvas.getContext('2d');
  const names = placed(context, variables, source.width / scale - 2 * kMargin);
  const head = kLine * (names.at(-1).line + 2) * scale;
  canvas.width = source.width;
  canvas.height = source.height + head;
  const look = getComputedStyle(document.body);
  context.fillStyle = look.backgroundColor;
  context.fillRect(0, 0, canvas.width, canvas.height);
  context.drawImage(source, 0, head);
  context.scale(scale, scale);
  context.fillStyle = look.color;
  context.font = 'bold 14px system-ui, sans-serif';
  context.fillText(title, kMargin, 17);
  names.forEach(one => drawName(context, one));
  canvas.toBlob(blob => save(blob, name), 'image/png');
}

const setFont = context => {
  context.font = '13px system-ui, sans-serif';
};

// Where the names are, in lines that are not wider than `width`.
function placed(context, variables, width) {
  setFont(context);
  let x = 0,
    line = 0;
  return variables.map(({ name, unit, colour }) => {
    const text = cut(name, kLongest) + (unit ? ', ' + cut(unit, kLongest) : '');
    const size = kKey + context.measureText(text).width + 20;
    if (x > 0 && x + size > width) [x, line] = [0, line + 1];
    const place = { text, colour, line, x: kMargin + x };
    x += size;
    return place;
  });
}

function drawName(context, { text, colour, line, x }) {
  const y = kLine * (line + 1);
  setFont(context);
  context.fillStyle = colour;
  context.fillRect(x, y + 5, 12, 10);
  context.fillText(text, x + kKey, y + 15);
}

function save(blob, name) {
  const link = document.createElement('a');
  link.href = URL.createObjectURL(blob);
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 10e3);
}
