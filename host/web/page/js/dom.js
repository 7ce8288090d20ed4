// Makes elements. What comes from outside becomes text, never markup.

// A child is a node, a text, a number, or null and false, which are left out. A property that begins with "on" is a
// listener; `class` and whatever has a hyphen is an attribute; true and false set and leave out an attribute.
export function el(tag, properties = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) setProperty(element, name, value);
  element.append(...present(children));
  return element;
}

function setProperty(element, name, value) {
  if (name.startsWith('on')) element.addEventListener(name.slice(2), value);
  else if (value === true) element.setAttribute(name, '');
  else if (value !== false && value !== null && value !== undefined) element.setAttribute(name, value);
}

function present(children) {
  return children.flat(Infinity).filter(child => child !== null && child !== undefined && child !== false);
}

export function fill(element, ...children) {
  element.replaceChildren(...present(children));
  return element;
}

// Sets a text only if it differs: so a screen reader is not told again and a selection stays.
export function setText(element, text) {
  if (element.textContent !== text) element.textContent = text;
}

// Calls `work` at most once in `ms`, and in a frame that is shown: a tab in the background paints nothing.
export function paced(work, ms = 250) {
  let last = 0,
    waiting = false,
    ended = false;
  const frame = () => {
    waiting = false;
    if (ended) return;
    last = performance.now();
    work();
  };
  const ask = () => {
    if (waiting || ended) return;
    waiting = true;
    setTimeout(() => requestAnimationFrame(frame), Math.max(0, ms - (performance.now() - last)));
  };
  ask.end = () => {
    ended = true;
  };
  return ask;
}

// Calls `work` when nothing has asked for `ms`.
export function settled(work, ms) {
  let timer = 0;
  const ask = (...values) => {
    clearTimeout(timer);
    timer = setTimeout(work, ms, ...values);
  };
  ask.end = () => clearTimeout(timer);
  return ask;
}
