// What is wrong, file by file, with the source lines around it.
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "program/findings/SourceFiles.h"
#include "program/report/HtmlPage.h"

#include <algorithm>
#include <array>
#include <map>

namespace kx {

namespace {

// What the details of problems may take of a page that is to be sent around; errors come first.
constexpr std::uint64_t DetailBudget = 96U * 1024;
constexpr std::size_t LongestSourceLine = 160;
constexpr int LinesAroundError = 3;
constexpr int LinesAroundOther = 1;
constexpr std::size_t MostFixed = 200;

struct TFileGroup {
  std::u16string File; // as seen from the root
  std::vector<const TFinding*> Findings = {};
  std::array<std::int64_t, 3> Counts = {}; // by severity
  std::int64_t New = 0;

  std::int64_t Of(TFindingSeverity severity) const { return Counts[static_cast<std::size_t>(severity)]; }
};

// Those with errors first, then those with what is new; else in the order of their coming, so that what
// failed first is the first.
std::vector<TFileGroup> GroupsOf(const THtmlPage& page) {
  std::vector<TFileGroup> groups;
  std::map<std::u16string, std::size_t> places;
  for (const auto& finding : page.Report.Findings) {
    if (IsOfTest(finding)) continue;
    const std::u16string file = SeenFrom(page.Report.Root, finding.Place.File);
    const auto [place, isFirst] = places.emplace(file, groups.size());
    if (isFirst) groups.push_back({file});
    TFileGroup& group = groups[place->second];
    group.Findings.push_back(&finding);
    ++group.Counts[static_cast<std::size_t>(finding.Severity)];
    if (NoveltyOf(finding, page.Past) == TNovelty::New) ++group.New;
  }
  std::ranges::stable_sort(groups, [](const TFileGroup& a, const TFileGroup& b) {
    const bool hasErrors = a.Of(TFindingSeverity::Error) > 0;
    if (hasErrors || b.Of(TFindingSeverity::Error) > 0)
      return hasErrors && b.Of(TFindingSeverity::Error) == 0;
    return a.New > 0 && b.New == 0;
  });
  for (auto& group : groups)
    std::ranges::stable_sort(group.Findings, std::ranges::greater(), &TFinding::Severity);
  return groups;
}

const char* IconName(TFindingSeverity severity) {
  return WordOf(severity); // the style's classes are the words
}

class TProblemWriter {
public:
  TProblemWriter(const THtmlPage& page, THtmlWriter& out)
      : page_(page), out_(out), sources_(page.Report.Root) {}

  void Write(const TFileGroup& group) {
    const bool hasErrors = group.Of(TFindingSeverity::Error) > 0;
    project_ = group.Findings.front()->Project;
    const std::u16string project = ProjectName(project_);
    out_ << (hasErrors ? "<details class=group open" : "<details class=group") << " data-f=\"" << group.File
         << "\" data-p=\"" << project << "\"><summary><h3>";
    WriteFileName(group.File);
    if (!project.empty()) out_ << " <span>" << u"\u00b7 " << project << "</span>";
    out_ << "</h3><span class=counts>";
    if (group.New > 0) out_ << "<span class=new>" << group.New << " new</span>";
    for (const auto severity : {TFindingSeverity::Error, TFindingSeverity::Warning, TFindingSeverity::Note})
      if (const auto count = group.Of(severity); count > 0)
        out_ << "<span>" << Icon(IconName(severity), std::string(WordOf(severity)) + "s") << count
             << "</span>";
    out_ << "</span></summary>\n";
    for (const auto* finding : group.Findings)
      Write(*finding, group.File);
    out_ << "</details>\n";
  }

private:
  void WriteFileName(const std::u16string& file) {
    if (file.empty()) {
      out_ << "In no file";
      return;
    }
    const std::u16string name = text::ExtractFileName(file);
    out_ << name;
    if (name.size() < file.size())
      out_ << " <span>" << std::u16string_view(file).substr(0, file.size() - name.size() - 1) << "</span>";
  }

  // The link stands beside what folds: one control has no other inside.
  void Write(const TFinding& finding, const std::u16string& file) {
    const TNovelty novelty = NoveltyOf(finding, page_.Past);
    out_ << "<div class=\"f " << IconName(finding.Severity);
    if (novelty != TNovelty::Unknown) out_ << (novelty == TNovelty::New ? " new" : " known");
    out_ << "\"";
    if (finding.Project != project_) out_ << " data-p=\"" << ProjectName(finding.Project) << "\"";
    const bool isFirst = finding.Severity == TFindingSeverity::Error && !std::exchange(hasError_, true);
    out_ << (isFirst ? " id=first>" : ">");
    WritePlace(finding);
    out_ << "<code>" << finding.Rule << "</code>";
    if (isFirst || details_ < DetailBudget) {
      const std::uint64_t before = out_.Size();
      out_ << (isFirst ? "<details open><summary>" : "<details><summary>") << finding.Message << "</summary>";
      WriteDetails(finding, file);
      out_ << "</details>";
      details_ += out_.Size() - before;
    } else {
      out_ << "<span>" << finding.Message << "</span>";
    }
    out_ << (novelty == TNovelty::New ? "<b>new</b></div>\n" : "</div>\n");
  }

  void WritePlace(const TFinding& finding) {
    const int line = finding.Place.Line;
    const std::string place = line > 0 ? "line " + std::to_string(line) : std::string();
    if (finding.Said > 0)
      out_ << "<a href=#L" << std::to_string(finding.Said) << ">" << (place.empty() ? "log" : place)
           << "</a>";
    else
      out_ << "<span>" << place << "</span>";
  }

  void WriteDetails(const TFinding& finding, const std::u16string& file) {
    WriteSource(finding, file);
    if (!finding.Steps.empty()) {
      out_ << "<ol>";
      for (const auto& step : finding.Steps) {
        out_ << "<li>" << SeenFrom(page_.Report.Root, step.Place.File);
        if (step.Place.Line > 0) out_ << u":" << std::to_string(step.Place.Line);
        out_ << " " << step.Message;
      }
      out_ << "</ol>";
    }
    if (!finding.Advice.empty()) out_ << "<p>" << finding.Advice;
    WriteOrigin(finding);
  }

  void WriteOrigin(const TFinding& finding) {
    std::vector<std::u16string> parts;
    for (const auto* part : {&finding.Configuration, &finding.Action})
      if (!part->empty()) parts.push_back(*part);
    if (finding.Occurrences > 1) parts.push_back(CountOf(finding.Occurrences, u"time"));
    out_ << "<p class=origin>" << text::Join(parts, u", ");
    if (page_.Past == nullptr) return;
    const auto since = page_.Past->KnownSince.find(finding.Fingerprint);
    if (since == page_.Past->KnownSince.end() || since->second >= page_.Past->Runs.size()) return;
    out_ << (parts.empty() ? "since " : ", since ") << Day(page_.Past->Runs[since->second].Began) << ", "
         << CountOf(static_cast<std::int64_t>(page_.Past->Runs.size() - since->second), u"run") << " ago";
  }

  void WriteSource(const TFinding& finding, const std::u16string& file) {
    const TSourceFile* source = finding.Place.Line > 0 ? sources_.Open(file) : nullptr;
    if (source == nullptr || finding.Place.Line > static_cast<int>(source->Lines.size())) return;
    const int around = finding.Severity == TFindingSeverity::Error ? LinesAroundError : LinesAroundOther;
    const int from = std::max(1, finding.Place.Line - around);
    const int to = std::min(static_cast<int>(source->Lines.size()), finding.Place.Line + around);
    out_ << "<pre class=src>";
    for (int line = from; line <= to; ++line) {
      const auto text = std::u16string_view(source->Lines[static_cast<std::size_t>(line) - 1]);
      const bool isHit = line == finding.Place.Line;
      out_ << (isHit ? "<mark><u>" : "<u>") << std::to_string(line) << "</u>"
           << text.substr(0, LongestSourceLine) << (isHit ? "</mark>\n" : "\n");
    }
    out_ << "</pre>";
  }

  const THtmlPage& page_;
  THtmlWriter& out_;
  TSourceFiles sources_;
  std::uint64_t details_ = 0; // what they took
  bool hasError_ = false;
  std::u16string project_; // of most findings of the group
};

void WriteFixed(const TPast& past, const std::u16string& root, THtmlWriter& out) {
  const auto count =
      std::ranges::count_if(past.Fixed, [](const TFinding& finding) { return !IsOfTest(finding); });
  if (count == 0) return;
  out << "<details class=\"group fixed\"><summary><h3>Fixed since the run before</h3><span "
         "class=counts><span>"
      << Icon("done", "fixed") << count << "</span></span></summary>\n";
  std::size_t shown = 0;
  for (const auto& finding : past.Fixed) {
    if (IsOfTest(finding) || ++shown > MostFixed) continue;
    out << "<div class=\"f " << IconName(finding.Severity) << " fixed\"><span>";
    if (!finding.Place.File.empty()) out << text::ExtractFileName(SeenFrom(root, finding.Place.File));
    out << "</span><code>" << finding.Rule << "</code><span>" << finding.Message << "</span></div>\n";
  }
  out << "</details>\n";
}

void WriteChoice(const char* name, const char* value, const char* label, THtmlWriter& out) {
  out << "<button data-" << name << "=\"" << value
      << "\" aria-pressed=" << (*value == '\0' ? "true" : "false") << ">" << label << "</button>";
}

void WriteTools(const THtmlPage& page, THtmlWriter& out) {
  out << "<div class=tools hidden><input type=search id=problem-find placeholder=\"Search text, file or "
         "code\" "
         "aria-label=\"Search problems\"><div class=choice role=group aria-label=Severity>";
  WriteChoice("severity", "", "All", out);
  WriteChoice("severity", "error", "Errors", out);
  WriteChoice("severity", "warning", "Warnings", out);
  out << "</div>";
  if (page.Past != nullptr) {
    out << "<div class=choice role=group aria-label=\"Against the run before\">";
    WriteChoice("novelty", "", "All", out);
    WriteChoice("novelty", "new", "New", out);
    WriteChoice("novelty", "known", "Known", out);
    WriteChoice("novelty", "fixed", "Fixed", out);
    out << "</div>";
  }
  out << "<label>Group by <select id=problem-group><option value=file>File<option value=rule>Rule<option "
         "value=project>Project</select></label><output id=problem-count></output></div>\n";
}

} // namespace

std::int64_t ProblemCount(const THtmlPage& page) {
  return std::ranges::count_if(page.Report.Findings,
                               [](const TFinding& finding) { return !IsOfTest(finding); });
}

void WriteProblems(const THtmlPage& page, THtmlWriter& out) {
  const std::int64_t count = ProblemCount(page);
  const bool hasFixed = page.Past != nullptr && !page.Past->Fixed.empty();
  if (count == 0 && !hasFixed) {
    out << "<p>No tool and no action said that anything is wrong.</p>\n";
    return;
  }
  out << "<p>What several projects or configurations say is counted once.";
  if (page.Past != nullptr)
    out << " Compared with the run of " << DayTime(page.Past->Runs.back().Began) << ".";
  out << "</p>\n";
  WriteTools(page, out);
  out << "<div id=groups>\n";
  TProblemWriter writer(page, out);
  for (const auto& group : GroupsOf(page))
    writer.Write(group);
  if (page.Past != nullptr) WriteFixed(*page.Past, page.Report.Root, out);
  out << "</div>\n<p class=none id=no-problem hidden>No problem matches. <button "
         "id=clear>Clear</button></p>\n";
  if (page.Report.MoreFindings > 0)
    out << "<p class=remark>" << page.Report.MoreFindings
        << " more were not kept: there were too many.</p>\n";
}

} // namespace kx
