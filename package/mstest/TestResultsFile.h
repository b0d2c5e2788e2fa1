// The results files (.trx) of MSTest and of the tools that write its format.
#pragma once

#include "contract/UnitTests.h"

#include <string_view>
#include <vector>

namespace kx {

using TKxArrayOfMSTestResult = std::vector<TKxUnitTestResult>;

// One result for each element UnitTestResult of the document element's namespace, at any depth and in the
// order of their start tags; the class is that of the TestMethod in the test's definition, without its
// assembly. A file that is missing, or that cannot be read as XML to its end, gives none.
TKxArrayOfMSTestResult InterpretMSTestOutput(std::u16string_view fileName);
// The same; `reason` says why a file could not be read, and is empty for one that was.
TKxArrayOfMSTestResult InterpretMSTestOutput(std::u16string_view fileName, std::u16string& reason);

// The same from a file's bytes.
TKxArrayOfMSTestResult InterpretMSTestBytes(std::string_view bytes);

// Milliseconds of "00:01:02.345", found anywhere in the text; 0 where there is none. The digits behind the
// point are a whole number of milliseconds, three of them at most.
std::int64_t ParseUTCTime(std::u16string_view text);

// "2010-04-01T10:20:30.1234567+10:00", found anywhere in the text, as the time stands there: the offset is
// required, must be positive, and is ignored. Nothing for another text and for a day or time that does not
// exist.
std::optional<TKxDateTime> ParseUTCDateTime(std::u16string_view text);

} // namespace kx
