// What the user asks for, one thing after the other.
import { forgetGeneration } from "./api.js";
import { announceError } from "./dom.js";

let turn = Promise.resolve(); // the newest command
let change = turn; // the newest change, until what came of it is shown

// A click counts only where the button is still there when the mouse is let go. What is typed is sent when the mouse is pressed
// elsewhere; what its answer draws anew waits for the click, though no longer than this: a scroll bar does not say when it is let go.
const longestPress = 1000; // milliseconds
let letGo = Promise.resolve();
let release = () => {};
document.addEventListener(
  "pointerdown",
  () => {
    letGo = new Promise((resolve) => {
      release = resolve;
      setTimeout(resolve, longestPress);
    });
  },
  true,
);
const behindTheClick = () => setTimeout(release);
for (const event of ["pointerup", "pointercancel"]) document.addEventListener(event, behindTheClick, true);
export const whenLetGo = () => letGo;

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
