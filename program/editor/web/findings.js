// What findings have in common wherever they are listed.

export const isBad = (finding) => finding?.severity === "error" || finding?.severity === "warning";

export const nameOf = (path) => path.split(/[\\/]/).at(-1);

// "Harbour.Core" of a project's file; devenv says no more than that itself.
export const projectName = (project) => nameOf(project).replace(/\.\w*proj$/i, "");

// "DayTime.cs 3"
export function placeText(finding) {
  if (!finding.file) return finding.action ?? "";
  return [nameOf(finding.file), finding.line].filter(Boolean).join(" ");
}

const ranks = { error: 0, warning: 1, note: 2 };
export const bySeverity = (a, b) => ranks[a.severity] - ranks[b.severity];
