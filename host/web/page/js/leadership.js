// Which tab of this browser leads.
//
// `id` is that of this tab, and `acts` has `lead()`, called when this tab is to lead, `follow()` when another tab has
// taken its place, and `claim()` when the others have to hear that this tab leads. Both classes have start(), when the
// tab is there; take(), when the leader is silent; leave(), when the tab goes; hear(message), of another tab.

const kJoin = 200; // ms until a new tab leads, if no leader answers
const kTurns = 300; // ms in which the tabs that stay try to follow a leader that has left

export const leadership = (id, acts) => (navigator.locks ? new LockedLead(acts) : new AgreedLead(id, acts));

// The leader has a lock, and each other tab waits for it: whatever ends the leader, the next one leads at once. A browser
// has locks with TLS, and without it for a server on the same machine.
class LockedLead {
  #acts;
  #release = null; // of the leader
  #hasLeft = false;

  constructor(acts) {
    this.#acts = acts;
  }

  start() {
    this.#hasLeft = false;
    this.#request({});
  }

  // A leader that the browser has frozen keeps its lock until it is taken away.
  take() {
    this.#request({ steal: true });
  }

  leave() {
    this.#hasLeft = true;
    this.#release?.();
  }

  hear() {}

  async #request(options) {
    try {
      await navigator.locks.request('vastra', options, () => this.#hold());
    } catch (error) {
      if (error.name === 'AbortError') this.#lose();
    }
  }

  #hold() {
    if (this.#hasLeft) return null;
    this.#acts.lead();
    return new Promise(release => {
      this.#release = release;
    });
  }

  #lose() {
    this.#acts.follow();
    this.#request({});
  }
}

// Without locks the tabs agree by words: a leader that leaves says so, and of two leaders the one with the smaller id
// goes on.
class AgreedLead {
  #id;
  #acts;
  #isLeading = false;
  #heard = 0; // words of a leader

  constructor(id, acts) {
    this.#id = id;
    this.#acts = acts;
  }

  start() {
    this.#takeAfter(kJoin);
  }

  take() {
    if (this.#isLeading) return;
    this.#isLeading = true;
    this.#acts.lead();
  }

  leave() {
    this.#isLeading = false;
  }

  hear({ kind, from, led }) {
    if (kind === 'lead' || kind === 'event') this.#meet(from);
    if (kind === 'bye' && led) this.#takeAfter(Math.random() * kTurns);
  }

  #takeAfter(ms) {
    const heard = this.#heard;
    setTimeout(() => {
      if (heard === this.#heard) this.take();
    }, ms);
  }

  #meet(other) {
    this.#heard++;
    if (!this.#isLeading) return;
    if (this.#id < other) return this.#acts.claim();
    this.#isLeading = false;
    this.#acts.follow();
  }
}
