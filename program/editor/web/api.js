// The requests to kxhost, one after the other, so that each sees what the one before has done. What only looks for something,
// and may take its time, holds up nobody.

import { expectMore } from "./dom.js";

let last = Promise.resolve();
const listeners = [];
let generation;
let newest = { answer: 0 }; // of the answers, which may overtake one another
let isRunning = false;

// Called with every answer: what it says about the whole project.
export function onAnswer(listener) {
  listeners.push(listener);
}

export class ApiError extends Error {
  constructor(message, until = "") {
    super(message);
    this.until = until; // what ends it
  }
}

// Until kxhost answers again.
export const answers = "answers";

// `signal` ends the wait, and what kxhost does for it.
async function send(operation, values, signal) {
  let response;
  try {
    response = await fetch(`api/${operation}`, {
      method: "POST",
      headers: { "Content-Type": "application/json" },
      body: JSON.stringify({ generation, ...values }),
      signal,
    });
  } catch {
    if (signal?.aborted) return undefined;
    throw new ApiError("kxhost does not answer. Is it still running? What was not saved stays with it.", answers);
  }
  if (!(response.headers.get("Content-Type") ?? "").startsWith("application/json"))
    throw new ApiError((await response.text()) || `kxhost answers ${response.status}.`);
  const answer = await response.json().catch((error) => {
    if (!signal?.aborted) throw error;
  });
  if (!answer) return undefined;
  if (answer.error && !response.ok) throw new ApiError(answer.error);
  if (answer.answer > newest.answer) newest = answer;
  generation = newest.generation;
  isRunning = newest.running;
  for (const listener of listeners) listener({ ...newest, messages: answer.messages });
  return answer;
}

function inTurn(ask) {
  expectMore(1);
  const result = last.then(ask).finally(() => expectMore(-1));
  last = result.catch(() => {});
  return result;
}

export function call(operation, values = {}) {
  return inTurn(() => send(operation, values));
}

// The same for what a run going on makes impossible: nothing is asked then, and undefined is the answer.
export function callUnlessRunning(operation, values = {}) {
  return inTurn(() => (isRunning ? undefined : send(operation, values)));
}

// What looks for something, after all that was asked before, and beside what is asked from now on. Undefined when nobody waits
// any more, while a run makes it impossible, or when it is about an action and the actions have been made anew.
export function look(operation, values = {}, { signal, unlessRunning = false } = {}) {
  expectMore(1);
  const asked = generation;
  const isInVain = () => signal?.aborted || (unlessRunning && isRunning) || (values.id !== undefined && generation !== asked);
  return last.then(() => (isInVain() ? undefined : send(operation, values, signal))).finally(() => expectMore(-1));
}

// After a request that was asked about a project as it no longer is.
export function forgetGeneration() {
  generation = undefined;
}

// Waits on the server for the next events of a run; does not hold up other requests.
export async function events(run, from) {
  const response = await fetch(`api/events?run=${run}&from=${from}`);
  if (!response.ok) throw new ApiError(`kxhost answers ${response.status}.`);
  return response.json();
}
