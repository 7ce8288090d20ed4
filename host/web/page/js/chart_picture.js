// The chart as a picture to save: the plot with a title and the names of the curves.

const kLine = 22; // px

export function savePicture(plot, title, variables, name) {
  const scale = devicePixelRatio || 1;
  const source = plot.ctx.canvas;
  const canvas = document.createElement('canvas');
  const head = kLine * 2 * scale;
  canvas.width = source.width;
  canvas.height = source.height + head;
  const context = canvas.getContext('2d');
  const look = getComputedStyle(document.body);
  context.fillStyle = look.backgroundColor;
  context.fillRect(0, 0, canvas.width, canvas.height);
  context.drawImage(source, 0, head);
  context.scale(scale, scale);
  context.fillStyle = look.color;
  context.font = 'bold 14px system-ui, sans-serif';
  context.fillText(title, 8, 17);
  drawNames(context, variables);
  canvas.toBlob(blob => save(blob, name), 'image/png');
}

function drawNames(context, variables) {
  context.font = '13px system-ui, sans-serif';
  let x = 8;
  for (const { name, unit, colour } of variables) {
    const text = unit ? `${name}, ${unit}` : name;
    context.fillStyle = colour;
    context.fillRect(x, kLine + 5, 12, 10);
    context.fillText(text, x + 17, kLine + 15);
    x += 37 + context.measureText(text).width;
  }
}

function save(blob, name) {
  const link = document.createElement('a');
  link.href = URL.createObjectURL(blob);
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 10e3);
}
