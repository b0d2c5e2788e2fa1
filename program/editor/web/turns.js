// What the user asks for, one thing after the other.
import { forgetGeneration } from "./api.js";
import { announceError } from "./dom.js";

let turn = Promise.resolve(); // the newest command
let change = turn; // the newest change, until what came of it is shown

// Does it, and says why it could not be done.
export async function attempt(work) {
  try {
    return await work();
  } catch (error) {
    announceError(error);
    return undefined;
  }
}

// The same for a change: what could not be done may have been asked about a project that is different now.
export function attemptChange(work, refresh) {
  const done = (async () => {
    try {
      return await work();
    } catch (error) {
      forgetGeneration();
      await attempt(refresh);
      announceError(error);
      return undefined;
    }
  })();
  change = done;
  return done;
}

// One command after the other: one that is given while another is under way means the project as that will leave it.
export function inTurn(command) {
  turn = turn
    .then(() => change)
    .then(() => command())
    .catch(announceError);
  return turn;
}
