// The page for logging in. Sends the form itself, so that the fragment with the view survives.
import { fill } from './dom.js';
import { fault } from './states.js';

const form = document.querySelector('form');
const alert = document.querySelector('[role=alert]');

async function send(event) {
  event.preventDefault();
  const button = form.querySelector('button');
  button.disabled = true;
  show(await attempt());
  button.disabled = false;
}

// The server leads back to this page after a failure.
const kWords = {
  '?failed': 'The name or the password is wrong.',
  '?wait': 'There were too many attempts. Wait a minute and try again.'
};

// The words of the fault; empty after a success.
async function attempt() {
  try {
    const answer = await fetch('/login', { method: 'POST', body: new URLSearchParams(new FormData(form)) });
    if (!answer.ok) return (await answer.json().catch(() => ({}))).error ?? `The server answers ${answer.status}`;
    return kWords[new URL(answer.url).search] ?? '';
  } catch {
    return 'The server does not answer';
  }
}

function show(words) {
  if (!words) return location.replace('/' + location.hash);
  fill(alert, fault(words));
  alert.hidden = false;
  form.elements.password.select();
}

form.addEventListener('submit', send);
