// The address has the view: its page and parameters are in the fragment, #/chart?logger=kiln&vars=Temp.

export function where() {
  const [page, query = ''] = location.hash.replace(/^#\/?/, '').split('?');
  return { page: page || 'overview', parameters: new URLSearchParams(query) };
}

// Null, an empty text and an empty list are left out.
export function link(page, parameters = {}) {
  const query = new URLSearchParams();
  for (const [name, value] of Object.entries(parameters))
    for (const one of [value].flat()) if (one !== null && one !== undefined && one !== '') query.append(name, one);
  const text = query.toString();
  return '#/' + (page === 'overview' ? '' : page) + (text ? '?' + text : '');
}

// The view changes the address as it is changed, without a step of the history: "back" leaves the page. A moment later,
// since browsers refuse many changes in a short time, and a zoom makes many. An address that another page has been
// given since then stays: its event comes after a timer that was due.
let timer = 0;
let address = location.hash; // that of the view
export function remember(page, parameters) {
  clearTimeout(timer);
  timer = setTimeout(() => {
    const hash = link(page, parameters);
    if (location.hash !== address || hash === address) return;
    window.history.replaceState(null, '', hash);
    address = location.hash;
    dispatchEvent(new Event('remembered'));
  }, 200);
}

addEventListener('hashchange', () => {
  clearTimeout(timer);
  address = location.hash;
});
