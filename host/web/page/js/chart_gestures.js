// Wheel, pan, pinch, taps and keys of the plot. They end in four calls of `view`:
// zoom(factor, time), pan(milliseconds), tap(time) and key(name).

const kWheel = 1.2; // zoom of a notch
const kNotch = 100; // px
const kNotchLines = 3;
const kNotchPinch = 20; // px
const kTap = 6; // px that a finger may move in a tap

// A wheel turns by whole notches; a touchpad sends many small parts of one, and two fingers on it come with Ctrl.
function notches({ deltaY, deltaMode, ctrlKey }) {
  const notch = ctrlKey ? kNotchPinch : deltaMode === 0 ? kNotch : kNotchLines;
  return Math.max(-1, Math.min(1, deltaY / notch));
}

// `plot()` is the plot of now: it is made again when variables change.
export function listen(element, plot, view) {
  const pointers = new Map(); // the fingers, and a mouse that pans
  let start = [0, 0]; // where the newest finger or button went down
  let moved = 0; // px, the farthest since then
  const timeAt = x => plot().posToVal(x - plot().over.getBoundingClientRect().left, 'x');
  const perPixel = () => (plot().scales.x.max - plot().scales.x.min) / plot().over.clientWidth;
  const isPan = event => event.pointerType === 'touch' || event.button === 1 || event.shiftKey;

  function down(event) {
    if (!plot()?.over.contains(event.target)) return;
    moved = 0;
    start = [event.clientX, event.clientY];
    if (!isPan(event)) return;
    if (event.button === 1) event.preventDefault();
    pointers.set(event.pointerId, event.clientX);
    element.setPointerCapture(event.pointerId);
  }

  function move(event) {
    moved = Math.max(moved, Math.hypot(event.clientX - start[0], event.clientY - start[1]));
    if (!pointers.has(event.pointerId)) return;
    const before = [...pointers.values()];
    pointers.set(event.pointerId, event.clientX);
    if (moved < kTap) return;
    const after = [...pointers.values()];
    if (after.length === 2) pinch(before, after);
    else view.pan((before[0] - after[0]) * perPixel());
  }

  // The times that are under both fingers stay under them.
  function pinch(before, after) {
    const distance = ([a, b]) => Math.max(10, Math.abs(a - b)),
      middle = ([a, b]) => (a + b) / 2;
    view.pan((middle(before) - middle(after)) * perPixel());
    view.zoom(distance(before) / distance(after), timeAt(middle(after)));
  }

  const up = event => pointers.delete(event.pointerId);

  function click(event) {
    if (moved < kTap && plot()?.over.contains(event.target)) view.tap(timeAt(event.clientX));
  }

  function wheel(event) {
    if (!plot()?.over.contains(event.target)) return;
    event.preventDefault();
    if (Math.abs(event.deltaX) > Math.abs(event.deltaY)) view.pan(event.deltaX * perPixel());
    else view.zoom(kWheel ** notches(event), timeAt(event.clientX));
  }

  function key(event) {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    if (view.key(event.key)) event.preventDefault();
  }

  element.addEventListener('pointerdown', down);
  element.addEventListener('pointermove', move);
  for (const type of ['pointerup', 'pointercancel']) element.addEventListener(type, up);
  element.addEventListener('click', click);
  element.addEventListener('wheel', wheel, { passive: false });
  element.addEventListener('keydown', key);
}
