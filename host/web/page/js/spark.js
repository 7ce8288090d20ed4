// A small curve of the newest values, into a canvas.

// `points` is a list of [time, value]; NaN is a gap. The curve fills the height from the least to the greatest value.
// `look` has width, height and colour: asking each canvas for them costs more than the curve.
export function drawSpark(canvas, points, { width, height, colour }) {
  const scale = devicePixelRatio || 1;
  if (canvas.width !== Math.round(width * scale) || canvas.height !== Math.round(height * scale)) {
    canvas.width = Math.round(width * scale);
    canvas.height = Math.round(height * scale);
  }
  const context = canvas.getContext('2d');
  context.setTransform(scale, 0, 0, scale, 0, 0);
  context.clearRect(0, 0, width, height);
  const box = bounds(points);
  if (!box) return;
  context.strokeStyle = colour;
  context.lineWidth = 1.5;
  context.stroke(pathOf(points, box, width, height - 4));
}

export function sparkLook(canvas) {
  return { width: canvas.clientWidth, height: canvas.clientHeight, colour: getComputedStyle(canvas).color };
}

function bounds(points) {
  let least = Infinity,
    greatest = -Infinity;
  for (const [, value] of points) {
    if (value < least) least = value;
    if (value > greatest) greatest = value;
  }
  if (least > greatest) return null;
  return { from: points[0][0], to: points.at(-1)[0], least, greatest };
}

// A constant is a line in the middle; one value alone is a short line at the right.
function pathOf(points, { from, to, least, greatest }, width, height) {
  const path = new Path2D();
  const x = time => (to > from ? (time - from) / (to - from) : 1) * width;
  const y = value => 2 + (greatest > least ? (greatest - value) / (greatest - least) : 0.5) * height;
  let isDown = false;
  for (const [time, value] of points) {
    const isValue = !Number.isNaN(value);
    if (isValue && isDown) path.lineTo(x(time), y(value));
    else if (isValue) {
      path.moveTo(x(time) - 1, y(value));
      path.lineTo(x(time), y(value));
    }
    isDown = isValue;
  }
  return path;
}
