// Findings as lines that people read on a terminal.
#pragma once

#include "program/cli/Palette.h"
#include "program/findings/Finding.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kx::cli {

TStatusTag StatusOf(TFindingSeverity severity); // as whose colour it is shown

// "src/a.cs:12:5", a form that terminals make clickable; the file as seen from `here`. Empty for no place.
std::string PlaceText(const TFindingPlace& place, std::u16string_view here);

inline constexpr std::size_t MostFindingLines = 20;

// Warnings and errors, the most severe first where not all of them are shown, those of a file together:
// "src/a.cs:12:5: error CS0103: text", as seen from the current folder. Behind them how many more there are,
// `more` that are in no list among them, and where (`rest`: "in report.html"). Empty when there are none.
std::string FindingLines(std::span<const TFinding> findings, std::int64_t more, std::string_view rest,
                         const TPalette& palette);

// Of one.
std::string FindingLine(const TFinding& finding, const TPalette& palette);

} // namespace kx::cli
