// The search of all views: each of its words is in the text somewhere.

// Returns a function that says whether a text fits.
export function searchFor(words) {
  const all = words.toLowerCase().split(/\s+/).filter(Boolean);
  return text => all.every(word => text.toLowerCase().includes(word));
}

export const textOf = ({ name, unit, node }) => `${name} ${unit ?? ''} ${node ?? ''}`;
