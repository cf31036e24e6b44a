// Calls of the server. While it is not there, or is another start's, the page says so and waits.

export class Refused extends Error {
  constructor(status, message) {
    super(message);
    this.status = status;
  }
}

export const client = crypto.randomUUID();
const events = new EventTarget();
let waiting = false;

/** Tells when the server is there again after it was not. */
export const onReturn = (listener) => events.addEventListener("return", listener);

export async function call(path, options = {}) {
  let response;
  try {
    response = await fetch(path, options);
  } catch (error) {
    if (error.name === "AbortError") throw error;
    lose(`zol studio has ended. Start it again with --port ${location.port}: this page goes on, and nothing is lost.`);
    throw new Refused(0, "the server is not there");
  }
  if (response.ok) return response;
  const text = await response.text();
  let message = text;
  try {
    message = JSON.parse(text).error;
  } catch { /* no JSON: as it is */ }
  if (response.status === 401)
    lose("zol studio was started anew. Open the address that it printed, in this browser: this page then goes on.");
  throw new Refused(response.status, message);
}

export const get = async (path) => (await call(path)).json();

export const send = (path, body) =>
  call(path, { method: "POST", headers: { "Content-Type": "application/json" }, body: JSON.stringify(body) });

export const post = async (path, body) => (await send(path, body)).json();

function lose(message) {
  const banner = document.getElementById("banner");
  banner.textContent = message;
  banner.hidden = false;
  if (waiting) return;
  waiting = true;
  const again = setInterval(async () => {
    const reply = await fetch("/api/state").catch(() => null);
    if (reply?.status === 401) banner.textContent = "zol studio was started anew. Open the address that it printed, in this browser: this page then goes on.";
    if (!reply?.ok) return;
    clearInterval(again);
    waiting = false;
    banner.hidden = true;
    events.dispatchEvent(new Event("return"));
  }, 700);
}

/** Where the browser lets the page write the clipboard; false where it does not. */
export async function copyText(text) {
  try {
    await navigator.clipboard.writeText(text);
    return true;
  } catch {
    const box = document.createElement("textarea");
    box.value = text;
    (document.querySelector("dialog[open]") ?? document.body).append(box);
    box.select();
    const done = document.execCommand("copy");
    box.remove();
    return done;
  }
}

let noteTimer;
/** A line that goes by itself. */
export function note(text) {
  const line = document.getElementById("note");
  line.textContent = text;
  line.classList.add("shown");
  clearTimeout(noteTimer);
  noteTimer = setTimeout(() => line.classList.remove("shown"), 3500);
}
