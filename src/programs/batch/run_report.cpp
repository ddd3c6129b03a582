#include "run_report.h"

#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "tool/quantities.h"

namespace batch {

namespace {

using Json = nlohmann::ordered_json;

std::string lineOf(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

const char* nameOf(EventKind kind) {
  switch (kind) {
    case EventKind::kept:
      return "kept";
    case EventKind::started:
      return "started";
    case EventKind::triedAgain:
      return "retried";
    case EventKind::done:
      return "done";
    default:
      return "failed";
  }
}

std::size_t leftOf(const Progress& progress) { return progress.inputs - progress.finished(); }

std::string reasonText(const Record& record) {
  return record.detail.empty() ? record.reason : record.reason + ": " + record.detail;
}

}  // namespace

std::string progressText(const Progress& progress, double seconds) {
  std::string text = fmt::format("{} of {}", progress.finished(), progress.inputs);
  if (progress.failed > 0) text += fmt::format(", {} failed", progress.failed);
  const auto own = static_cast<double>(progress.done + progress.failed);
  const double rate = seconds > 0 ? own / seconds : 0;
  if (rate > 0) {
    text += fmt::format(", {:.3g} a second, {} left", rate,
                        tool::durationText(static_cast<double>(leftOf(progress)) / rate));
  }
  if (progress.running == 0 && progress.elsewhere > 0) {
    text += fmt::format(", waiting for {} that another run has", progress.elsewhere);
  }
  return text;
}

std::string lineOf(const Event& event, const std::string& log) {
  if (event.kind != EventKind::failed && event.kind != EventKind::triedAgain) return "";
  const char* const again = event.kind == EventKind::triedAgain ? ", trying again" : "";
  return fmt::format("{}: {}{} ({})", event.input->path, reasonText(*event.record), again, log);
}

std::string summaryText(const Progress& progress, double seconds, bool isInterrupted) {
  std::string text = fmt::format("{} inputs: {} done", progress.inputs, progress.done + progress.before);
  if (progress.before > 0) text += fmt::format(" ({} of them before)", progress.before);
  text += fmt::format(", {} failed", progress.failed);
  if (leftOf(progress) > 0) text += fmt::format(", {} left", leftOf(progress));
  text += fmt::format(", {:.2f} s{}\n", seconds, isInterrupted ? ", interrupted" : "");
  for (const auto& [reason, count] : progress.why) text += fmt::format("  {}: {}\n", reason, count);
  return text;
}

std::string jsonOf(const Event& event) {
  Json json = {{"event", nameOf(event.kind)}, {"input", event.input->path}, {"id", event.input->id}};
  if (event.record == nullptr) return lineOf(json);
  const Record& record = *event.record;
  if (event.kind == EventKind::kept) json["status"] = record.isDone ? "done" : "failed";
  if (!record.reason.empty()) json["reason"] = record.reason;
  if (!record.detail.empty()) json["detail"] = record.detail;
  json["tries"] = record.tries;
  if (event.kind != EventKind::triedAgain) json["seconds"] = record.seconds;
  return lineOf(json);
}

std::string jsonOfStart(const std::string& directory, std::size_t inputs) {
  return lineOf(Json{{"event", "begin"}, {"directory", directory}, {"inputs", inputs}});
}

std::string jsonOfJobs(const std::string& array, const std::string& collector, std::size_t tasks) {
  return lineOf(Json{{"event", "submitted"}, {"array", array}, {"tasks", tasks}, {"collector", collector}});
}

std::string jsonOfEnd(const Progress& progress, double seconds, bool isInterrupted) {
  Json why = Json::object();
  for (const auto& [reason, count] : progress.why) why[reason] = count;
  return lineOf(Json{{"event", "end"},
                     {"inputs", progress.inputs},
                     {"done", progress.done},
                     {"kept", progress.before},
                     {"failed", progress.failed},
                     {"left", leftOf(progress)},
                     {"why", why},
                     {"seconds", seconds},
                     {"interrupted", isInterrupted}});
}

}  // namespace batch
