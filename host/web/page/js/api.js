// Requests to the server. The addresses are those of docs/web.md.

class ApiError extends Error {
  constructor(status, words) {
    super(words);
    this.status = status;
  }
}

// A list gives one parameter for each element; null is left out.
export function address(path, parameters = {}) {
  const query = new URLSearchParams();
  for (const [name, value] of Object.entries(parameters))
    for (const one of [value].flat()) if (one !== null && one !== undefined) query.append(name, one);
  const text = query.toString();
  return '/api/v1/' + path + (text ? '?' + text : '');
}

export function loggerAddress(name, what, parameters) {
  return address(`loggers/${encodeURIComponent(name)}/${what}`, parameters);
}

// The object of the answer. Throws an ApiError with the words of the server; without a session the page for logging in
// takes over.
export async function get(url, signal) {
  const answer = await fetch(url, { signal, headers: { Accept: 'application/json' } });
  if (answer.status === 401) logIn();
  if (!answer.ok) throw new ApiError(answer.status, await words(answer));
  return answer.json();
}

async function words(answer) {
  try {
    return (await answer.json()).error;
  } catch {
    return `The server answers ${answer.status} ${answer.statusText}`;
  }
}

// The fragment has the view; it is there again after logging in.
function logIn() {
  location.replace('/login' + location.hash);
}

export async function logOut() {
  const isDone = await fetch('/logout', { method: 'POST' }).then(
    () => true,
    () => false
  );
  if (isDone) logIn();
}

// What to show of a request that failed; null if it was given up.
export function faultWords(error) {
  if (error.name === 'AbortError') return null;
  return error instanceof ApiError ? error.message : 'The server does not answer';
}
