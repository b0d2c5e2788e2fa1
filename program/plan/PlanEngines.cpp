// Plans as the files of engines that have machines: a job a part, its log as an artifact, and a last job that
// makes the report of all logs, whatever became of the parts.
#include "foundation/text/Encoding.h"
#include "program/plan/PlanFormats.h"

#include <algorithm>
#include <map>
#include <utility>

namespace kx {

namespace {

// A text of JSON is one of YAML.
std::string Yaml(std::u16string_view text) {
  std::string out;
  TJsonWriter json([&out](std::string_view utf8) { out += utf8; });
  json.Value(text);
  json.Flush();
  return out;
}

std::string Yaml(const std::vector<std::u16string>& texts) {
  std::string out;
  for (const auto& text : texts)
    out += (out.empty() ? "" : ", ") + Yaml(text);
  return "[" + out + "]";
}

// Where "${{" begins an expression, wherever it stands.
std::u16string WithoutExpressions(std::u16string_view text) {
  return text::ReplaceAll(text, u"${{", u"${{ '${{' }}");
}

class TEnginePlan {
public:
  TEnginePlan(const TPlan& plan, const TRunWords& words)
      : Plan(plan), words_(words), names_(NarrowNames(plan)) {
    for (const TPart& part : plan.Parts)
      for (const TActionNeed& need : part.Needs)
        isLoose_ |= !MustSucceed(plan, need);
  }

  const TPlan& Plan;

  std::size_t Count() const { return names_.size(); }
  const TPart& Part(std::size_t part) const { return Plan.Parts[part]; }
  std::u16string Job(std::size_t part) const { return u"part_" + names_[part]; }
  std::u16string Log(std::size_t part) const { return LogOf(Plan, part, names_[part]); }
  std::u16string Artifact(std::size_t part) const {
    const std::u16string log = Log(part);
    return log.substr(0, log.rfind(u'.'));
  }
  // For bash, which runs the steps on machines of every system.
  std::u16string Line(std::size_t part) const {
    return ShellLine(CommandOf(Part(part), words_, Log(part)), false);
  }
  std::vector<std::u16string> JobsNeeded(std::size_t part) const {
    std::vector<std::u16string> jobs;
    for (const TActionNeed& need : Part(part).Needs)
      jobs.push_back(Job(need.Action));
    return jobs;
  }
  std::vector<std::u16string> AllJobs() const {
    std::vector<std::u16string> jobs;
    for (std::size_t i = 0; i < Count(); ++i)
      jobs.push_back(Job(i));
    return jobs;
  }
  // An engine's own condition asks for the success of all that is further up, too.
  bool NeedsCondition(std::size_t part) const { return isLoose_ && !Part(part).Needs.empty(); }
  // The parts that may fail without holding up anything; a part whose success somebody needs is none of them.
  std::vector<bool> MayFail() const {
    std::vector<bool> mayFail(Count());
    for (std::size_t i = 0; i < Count(); ++i)
      mayFail[i] = Part(i).OnFailure != TOnFailure::Stop;
    for (const TPart& part : Plan.Parts)
      for (const TActionNeed& need : part.Needs)
        if (need.MustSucceed) mayFail[need.Action] = false;
    return mayFail;
  }

private:
  const TRunWords& words_;
  const std::vector<std::u16string> names_;
  bool isLoose_ = false; // some parts wait for the end of others, however it is
};

std::string Head(const TPlan& plan, const char* machines) {
  return "# The parts of " + text::ToUtf8(plan.Name) +
         ", written by \"kxhost plan\": a job a part, and one that makes the report.\n"
         "# Each machine has kxhost on its search path and a working copy in which the products of earlier "
         "parts are\n"
         "# found: hand them on, or share the folder. " +
         machines + "\n";
}

std::string ReportLine(const TEnginePlan& plan, const char* logs, const char* more) {
  return std::string("kxhost report ") + logs + " --parts " + std::to_string(plan.Count()) +
         " --report kx-report.html --junit kx-tests.xml " + more;
}

// ---- GitHub

constexpr std::size_t MostGitHubJobs = 256;

// A step that hands a file on, whatever happened before.
std::string GitHubUpload(const std::string& name, const std::string& path) {
  return "      - if: always()\n        uses: actions/upload-artifact@v4\n        with:\n          name: " +
         name + "\n          path: " + path + "\n          if-no-files-found: ignore\n";
}

std::vector<std::u16string> GitHubLabels(const TPart& part) {
  std::vector<std::u16string> labels{u"self-hosted"};
  for (const auto& word : part.Capabilities)
    labels.push_back(WithoutExpressions(word));
  return labels;
}

std::u16string GitHubCondition(const TEnginePlan& plan, std::size_t part) {
  std::u16string condition = u"!cancelled()";
  for (const TActionNeed& need : plan.Part(part).Needs) {
    const std::u16string result = u"needs." + plan.Job(need.Action) + u".result";
    const bool mustSucceed = MustSucceed(plan.Plan, need);
    condition.append(mustSucceed ? u" && " : u" && (").append(result).append(u" == 'success'");
    if (mustSucceed) continue;
    for (const auto* end : {u"failure", u"skipped"}) // as here, where the run goes on behind what never began
      condition.append(u" || ").append(result).append(u" == '").append(end).append(u"'");
    condition.append(u")");
  }
  return u"${{ " + condition + u" }}";
}

void PutGitHubJob(const TEnginePlan& plan, std::size_t part, const TPlanPut& put) {
  put("  " + text::ToUtf8(plan.Job(part)) + ":\n    name: " + Yaml(WithoutExpressions(plan.Part(part).Id)) +
      "\n    runs-on: " + Yaml(GitHubLabels(plan.Part(part))) + "\n");
  if (!plan.Part(part).Needs.empty()) put("    needs: " + Yaml(plan.JobsNeeded(part)) + "\n");
  if (plan.NeedsCondition(part)) put("    if: " + Yaml(GitHubCondition(plan, part)) + "\n");
  put("    steps:\n      - uses: actions/checkout@v4\n      - shell: bash\n        run: " +
      Yaml(WithoutExpressions(plan.Line(part))) + "\n" +
      GitHubUpload(Yaml(plan.Artifact(part)), Yaml(plan.Log(part))));
}

// More parts than jobs: those of one depth below the needs are shared out among the copies of one job.
class TGitHubMatrices {
public:
  explicit TGitHubMatrices(const TEnginePlan& plan) : plan_(plan), mayFail_(plan.MayFail()) {
    FindLevels();
    while (CountCopies() + 1 > MostGitHubJobs) // the report is a job too
      if (++share_ > plan.Count())
        throw EKxException(
            u"A workflow holds at most 256 jobs, and the parts of this plan wait for each other in a "
            u"row of " +
            text::FromInteger(static_cast<std::int64_t>(levels_.size())) +
            u". Plan a part of them by their names.");
  }

  std::vector<std::u16string> Jobs() const {
    std::vector<std::u16string> jobs;
    for (std::size_t i = 0; i < levels_.size(); ++i)
      jobs.push_back(Job(i));
    return jobs;
  }

  void Put(const TPlanPut& put) const {
    for (std::size_t i = 0; i < levels_.size(); ++i) {
      put("  " + text::ToUtf8(Job(i)) +
          ":\n    name: ${{ matrix.name }}\n    runs-on: ${{ matrix.labels }}\n");
      if (i > 0) put("    needs: " + text::ToUtf8(Job(i - 1)) + "\n");
      put("    strategy:\n      fail-fast: false\n      matrix:\n        include:\n");
      for (const auto& [labels, parts] : levels_[i])
        for (std::size_t first = 0; first < parts.size(); first += share_)
          PutCopy(labels, std::span(parts).subspan(first, std::min(share_, parts.size() - first)), put);
      put("    steps:\n      - uses: actions/checkout@v4\n      - shell: bash\n        run: ${{ matrix.run "
          "}}\n" +
          GitHubUpload("${{ matrix.artifact }}", "part-*.jsonl"));
    }
  }

private:
  using TLevel = std::map<std::vector<std::u16string>, std::vector<std::size_t>>; // parts by their labels

  void FindLevels() {
    std::vector<std::size_t> depths(plan_.Count());
    for (const std::size_t part : InOrder(plan_.Plan)) {
      for (const TActionNeed& need : plan_.Part(part).Needs)
        depths[part] = std::max(depths[part], depths[need.Action] + 1);
      levels_.resize(std::max(levels_.size(), depths[part] + 1));
      levels_[depths[part]][GitHubLabels(plan_.Part(part))].push_back(part);
    }
  }

  std::size_t CountCopies() const {
    std::size_t copies = 0;
    for (const TLevel& level : levels_)
      for (const auto& [labels, parts] : level)
        copies += (parts.size() + share_ - 1) / share_;
    return copies;
  }

  std::u16string Job(std::size_t level) const {
    return u"parts_" + text::FromInteger(static_cast<std::int64_t>(level) + 1);
  }

  void PutCopy(const std::vector<std::u16string>& labels, std::span<const std::size_t> parts,
               const TPlanPut& put) const {
    std::u16string lines = u"failed=0\n";
    for (const std::size_t part : parts)
      lines += plan_.Line(part) + (mayFail_[part] ? u" || true\n" : u" || failed=1\n");
    std::u16string name = plan_.Part(parts.front()).Id;
    if (parts.size() > 1) name += u" to " + plan_.Part(parts.back()).Id;
    put("          - name: " + Yaml(WithoutExpressions(name)) + "\n            labels: " + Yaml(labels) +
        "\n            artifact: " + Yaml(plan_.Artifact(parts.front())) +
        "\n            run: " + Yaml(WithoutExpressions(lines + u"exit $failed\n")) + "\n");
  }

  const TEnginePlan& plan_;
  const std::vector<bool> mayFail_;
  std::vector<TLevel> levels_;
  std::size_t share_ = 1; // parts a copy
};

// ---- GitLab

constexpr std::size_t MostGitLabNeeds = 50;

// Job names that a part needs, few enough: jobs that only wait stand for fifty each.
class TGitLabNeeds {
public:
  explicit TGitLabNeeds(const TPlanPut& put) : put_(put) {}

  std::vector<std::u16string> Shorten(std::vector<std::u16string> jobs) {
    while (jobs.size() > MostGitLabNeeds) {
      std::vector<std::u16string> joints;
      for (std::size_t first = 0; first < jobs.size(); first += MostGitLabNeeds) {
        const auto begin = jobs.begin() + static_cast<std::ptrdiff_t>(first);
        const auto count = std::min(MostGitLabNeeds, jobs.size() - first);
        joints.push_back(Joint({begin, begin + static_cast<std::ptrdiff_t>(count)}));
      }
      jobs = std::move(joints);
    }
    return jobs;
  }

private:
  // Parts that wait for the same ones share what stands for them.
  std::u16string Joint(const std::vector<std::u16string>& jobs) {
    const auto [known, isNew] = joints_.emplace(jobs, u"");
    if (isNew) {
      known->second = u"joint_" + text::FromInteger(static_cast<std::int64_t>(joints_.size()));
      put_(text::ToUtf8(known->second) + ":\n  stage: parts\n  needs: " + Yaml(jobs) +
           "\n  variables: {GIT_STRATEGY: none}\n  script: [\"echo joined\"]\n\n");
    }
    return known->second;
  }

  const TPlanPut& put_;
  std::map<std::vector<std::u16string>, std::u16string> joints_;
};

// ---- Azure

std::u16string AzureCondition(const TEnginePlan& plan, std::size_t part) {
  std::u16string condition = u"and(not(canceled())";
  for (const TActionNeed& need : plan.Part(part).Needs)
    condition += u", in(dependencies." + plan.Job(need.Action) +
                 u".result, 'Succeeded', 'SucceededWithIssues'" +
                 (MustSucceed(plan.Plan, need) ? u")" : u", 'Failed', 'Skipped')");
  return condition + u")";
}

void PutAzureJob(const TEnginePlan& plan, std::size_t part, const TPlanPut& put) {
  put("- job: " + text::ToUtf8(plan.Job(part)) +
      "\n  displayName: " + Yaml(WithoutExpressions(plan.Part(part).Id)) + "\n");
  if (!plan.Part(part).Needs.empty()) put("  dependsOn: " + Yaml(plan.JobsNeeded(part)) + "\n");
  if (plan.NeedsCondition(part)) put("  condition: " + Yaml(AzureCondition(plan, part)) + "\n");
  if (!plan.Part(part).Capabilities.empty())
    put("  pool:\n    name: Default\n    demands: " + Yaml(plan.Part(part).Capabilities) + "\n");
  put("  steps:\n  - bash: " + Yaml(WithoutExpressions(plan.Line(part))) +
      "\n    displayName: Run\n  - publish: " + Yaml(plan.Log(part)) +
      "\n    artifact: " + Yaml(plan.Artifact(part)) + "\n    condition: always()\n");
}

} // namespace

void WritePlanGitHub(const TPlan& plan, const TRunWords& words, const TPlanPut& put) {
  const TEnginePlan jobs(plan, words);
  put(Head(plan, "A runner\n# has the labels that its parts name.") +
      "name: " + Yaml(WithoutExpressions(plan.Name)) + "\non:\n  workflow_dispatch:\njobs:\n");
  std::vector<std::u16string> all = jobs.AllJobs();
  if (jobs.Count() < MostGitHubJobs) {
    for (std::size_t i = 0; i < jobs.Count(); ++i)
      PutGitHubJob(jobs, i, put);
  } else {
    const TGitHubMatrices matrices(jobs);
    matrices.Put(put);
    all = matrices.Jobs();
  }
  put("  report:\n    name: Report\n    runs-on: [self-hosted]\n    needs: " + Yaml(all) +
      "\n    if: always()\n    steps:\n      - uses: actions/download-artifact@v4\n        with:\n"
      "          pattern: part-*\n          path: kx-logs\n          merge-multiple: true\n"
      "      - shell: bash\n        run: " +
      ReportLine(jobs, "kx-logs/*.jsonl", "--sarif kx-findings.sarif --ci github") + "\n" +
      GitHubUpload("report",
                   "|\n            kx-report.html\n            kx-tests.xml\n            kx-findings.sarif"));
}

void WritePlanGitLab(const TPlan& plan, const TRunWords& words, const TPlanPut& put) {
  const TEnginePlan jobs(plan, words);
  put(Head(plan,
           "A runner\n# has the tags that its parts name. This is a child pipeline: trigger it with include: "
           "artifact.") +
      "stages: [parts, report]\n\n");
  const auto mayFail = jobs.MayFail();
  TGitLabNeeds needs(put);
  for (std::size_t i = 0; i < jobs.Count(); ++i) {
    const auto needed = needs.Shorten(jobs.JobsNeeded(i));
    put(text::ToUtf8(jobs.Job(i)) + ": # " + text::ToUtf8(jobs.Part(i).Id) +
        "\n  stage: parts\n  needs: " + Yaml(needed) + "\n");
    if (!jobs.Part(i).Capabilities.empty()) put("  tags: " + Yaml(jobs.Part(i).Capabilities) + "\n");
    if (mayFail[i]) put("  allow_failure: true\n");
    put("  script:\n    - " + Yaml(jobs.Line(i)) + "\n  artifacts:\n    when: always\n    paths: " +
        Yaml(std::vector<std::u16string>{jobs.Log(i)}) + "\n    expire_in: 1 week\n\n");
  }
  put("report:\n  stage: report\n  when: always\n  script:\n    - " +
      ReportLine(jobs, "part-*.jsonl", "--code-quality kx-quality.json --ci gitlab") +
      "\n  artifacts:\n    when: always\n    paths: [kx-report.html]\n    reports:\n      junit: "
      "kx-tests.xml\n"
      "      codequality: kx-quality.json\n");
}

void WritePlanAzure(const TPlan& plan, const TRunWords& words, const TPlanPut& put) {
  const TEnginePlan jobs(plan, words);
  put(Head(plan, "An agent\n# of the pool has the capabilities that its parts demand.") +
      "trigger: none\npool:\n  name: Default\njobs:\n");
  for (std::size_t i = 0; i < jobs.Count(); ++i)
    PutAzureJob(jobs, i, put);
  put("- job: report\n  displayName: Report\n  dependsOn: " + Yaml(jobs.AllJobs()) +
      "\n  condition: always()\n  steps:\n  - checkout: none\n  - download: current\n  - bash: " +
      ReportLine(jobs, "\"$(Pipeline.Workspace)\"/part-*/*.jsonl", "--ci azure") +
      "\n    displayName: Report\n  - publish: kx-report.html\n    artifact: report\n    condition: "
      "always()\n");
}

} // namespace kx
