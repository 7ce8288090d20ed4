// Makes elements. What comes from outside becomes text, never markup.

// A child is a node, a text, a number, or null and false, which are left out. A property that begins with "on" is a
// listener; `class` and whatever has a hyphen is an attribute; true and false set and leave out an attribute.
export function el(tag, properties = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) setProperty(element, name, value);
  element.append(...present(children));
  return element;
}

export function setProperty(element, name, value) {
  if (name.startsWith('on')) element.addEventListener(name.slice(2), value);
  else if (value === true) element.setAttribute(name, '');
  else if (value !== false && value !== null && value !== undefined) element.setAttribute(name, value);
  else element.removeAttribute(name);
}

function present(children) {
  return children.flat(Infinity).filter(child => child !== null && child !== undefined && child !== false);
}

export function fill(element, ...children) {
  element.replaceChildren(...present(children));
  return element;
}

// Like fill, but a child that is equal to the one that is there stays, and with it a selection.
export function refill(element, ...children) {
  const next = present(children).map(child => (child instanceof Node ? child : document.createTextNode(child)));
  next.forEach((child, i) => {
    const old = element.childNodes[i];
    if (!old) element.append(child);
    else if (!old.isEqualNode(child)) old.replaceWith(child);
  });
  while (element.childNodes.length > next.length) element.lastChild.remove();
}

// Makes a list of elements the children. Those that are there already are not touched, so that they keep the focus.
export function arrange(element, children) {
  const kept = new Set(children);
  for (const child of [...element.children]) if (!kept.has(child)) child.remove();
  children.forEach((child, i) => {
    if (element.children[i] !== child) element.insertBefore(child, element.children[i] ?? null);
  });
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

// Whether this device has a pointer that is somewhere between clicks: a finger is not.
export const canHover = () => matchMedia('(hover: hover)').matches;
