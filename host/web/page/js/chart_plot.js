// The plot itself: what uPlot is told about series, scales and axes. The time axis has marks of our own, in the zone of
// the server: those of uPlot are by the clock of this device.
import { el } from './dom.js';
import { cut, short } from './format.js';
import { tickLabels, ticks } from './time.js';

const kFont = '12px system-ui, sans-serif';
const kTick = 40; // px between two numbers of an axis
const kAxis = 62; // px, about the width of an axis
const kAxesPart = 0.4; // of the width, which axes may have: the curves need the rest

// Loads uPlot when the first chart is opened: the other views are there sooner on a slow link. Throws if it cannot.
export async function loadPlots() {
  if (globalThis.uPlot) return;
  await Promise.all([
    loaded(el('link', { rel: 'stylesheet', href: vendor('uPlot.min.css') })),
    loaded(el('script', { src: vendor('uPlot.iife.min.js') }))
  ]);
}

const vendor = file => new URL('../vendor/' + file, import.meta.url).href;

// Before the styles of the page, which have the last word.
function loaded(element) {
  return new Promise((resolve, reject) => {
    element.addEventListener('load', resolve);
    element.addEventListener('error', () => reject(new Error('The charts cannot be loaded from the server')));
    document.head.prepend(element);
  });
}

// `variables`: name, unit and colour. `axes`: "unit", "each" or "one". `view()` is the range as [from, to],
// `marks()` the cursors as a list of [name, time]. `select(from, to)` is called after a drag, `point(time)` when the
// pointer moves, null when it leaves.
export function makePlot(element, { variables, axes, view, marks, select, point }) {
  const look = getComputedStyle(element);
  const colours = { text: look.getPropertyValue('--text'), grid: look.getPropertyValue('--grid') };
  const keys = variables.map((variable, i) => scaleKey(axes, variable, i));
  const { clientWidth: width, clientHeight: height } = element;
  return new globalThis.uPlot(
    {
      width,
      height,
      legend: { show: false },
      cursor: {
        y: false,
        points: { show: false },
        drag: { x: true, y: false, setScale: false },
        bind: { mousedown: onlyPlain, dblclick: () => null }
      },
      scales: { x: { time: false, range: view }, ...Object.fromEntries(keys.map(key => [key, { range: yRange }])) },
      series: [{}, ...variables.flatMap((variable, i) => seriesOf(variable, keys[i]))],
      bands: variables.map(({ colour }, i) => ({ series: [3 * i + 1, 3 * i + 2], fill: colour + '40' })),
      axes: [timeAxis(colours), ...valueAxes(variables, keys, axes, colours, width)],
      hooks: {
        setSelect: [plot => finishSelect(plot, select)],
        draw: [plot => drawMarks(plot, marks(), colours.text)],
        setCursor: [plot => point(plot.cursor.left >= 0 ? plot.posToVal(plot.cursor.left, 'x') : null)]
      }
    },
    [[], ...variables.flatMap(() => [[], [], []])],
    element
  );
}

const kLabel = 32;
const labelOf = ({ name, unit }) => cut(name, kLabel) + (unit ? ', ' + cut(unit, kLabel) : '');

function scaleKey(axes, { unit }, i) {
  if (axes === 'one') return 'y';
  return axes === 'each' ? 'y' + i : 'unit ' + unit;
}

// A constant is in the middle, and there always is a range. What differs by less than a float can is a constant: a mean
// is not rounded like its values.
function yRange(plot, least, greatest) {
  if (least === null || least === undefined) return [0, 1];
  const size = Math.max(Math.abs(least), Math.abs(greatest));
  const isConstant = greatest - least <= size * 1e-6;
  const margin = isConstant ? size * 0.05 || 1 : (greatest - least) * 0.06;
  return [least - margin, greatest + margin];
}

// A drag with Shift or another button is a pan (chart_gestures.js).
const onlyPlain = (plot, target, handler) => event => {
  if (event.button === 0 && !event.shiftKey) handler(event);
};

function seriesOf({ name, colour }, scale) {
  const edge = { scale, stroke: colour, width: 1, points: { show: false } };
  return [
    { ...edge, label: name + ' greatest' },
    { ...edge, label: name + ' least' },
    { scale, stroke: colour, width: 1.5, label: name }
  ];
}

function timeAxis({ text, grid }) {
  return {
    stroke: text,
    font: kFont,
    grid: { stroke: grid, width: 1 },
    ticks: { stroke: grid },
    size: 46,
    splits: (plot, axis, from, to) => ticks(from, to, Math.max(2, plot.bbox.width / devicePixelRatio / 100)),
    values: (plot, times) => tickLabels(times)
  };
}

// How many axes there is space for.
export const mostAxes = width => Math.max(2, Math.floor((width * kAxesPart) / kAxis));

function valueAxes(variables, keys, axes, { text, grid }, width) {
  return [...new Set(keys)].map((scale, n) => {
    const mine = variables.filter((_, i) => keys[i] === scale);
    const label = axes === 'each' ? labelOf(mine[0]) : axes === 'one' ? null : cut(mine[0].unit, kLabel) || null;
    return {
      scale,
      side: n % 2 ? 1 : 3,
      show: n < mostAxes(width),
      label,
      labelFont: kFont,
      labelSize: 18,
      font: kFont,
      stroke: mine.length === 1 ? mine[0].colour : text,
      size: sizeOf,
      ticks: { stroke: grid },
      grid: { show: n === 0, stroke: grid, width: 1 },
      splits: (plot, axis, from, to) => roundNumbers(from, to, plot.bbox.height / devicePixelRatio / kTick),
      values: (plot, values) => values.map(number => short(Number(number.toPrecision(8))))
    };
  });
}

const kSteps = [1, 2, 5, 10];

// Round numbers of a range, also of one that is very small: uPlot's own end at 1e-16.
function roundNumbers(from, to, count) {
  const power = 10 ** Math.floor(Math.log10((to - from) / count));
  const step = power * kSteps.find(size => power * size >= (to - from) / count);
  const first = Math.ceil(from / step),
    last = Math.floor(to / step);
  return Array.from({ length: Math.max(0, last - first + 1) }, (_, i) => (first + i) * step);
}

// As wide as the widest number.
function sizeOf(plot, values) {
  const longest = Math.max(3, ...(values ?? []).map(text => text.length));
  return 26 + longest * 7;
}

function finishSelect(plot, select) {
  const { left, width } = plot.select;
  if (width < 6) return;
  select(plot.posToVal(left, 'x'), plot.posToVal(left + width, 'x'));
  plot.setSelect({ left: 0, top: 0, width: 0, height: 0 }, false);
}

function drawMarks(plot, marks, colour) {
  const { ctx: context, bbox } = plot;
  const scale = devicePixelRatio || 1;
  context.save();
  context.strokeStyle = context.fillStyle = colour;
  context.font = `bold ${13 * scale}px system-ui, sans-serif`;
  context.lineWidth = scale;
  context.setLineDash([4 * scale, 3 * scale]);
  for (const [name, time] of marks) {
    const x = Math.round(plot.valToPos(time, 'x', true));
    if (x < bbox.left || x > bbox.left + bbox.width) continue;
    context.beginPath();
    context.moveTo(x, bbox.top);
    context.lineTo(x, bbox.top + bbox.height);
    context.stroke();
    context.fillText(name, x + 4 * scale, bbox.top + 14 * scale);
  }
  context.restore();
}
