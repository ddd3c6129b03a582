#include "importers/run/run_import.h"

#include <algorithm>
#include <set>

#include "importers/run/record_names.h"
#include "importers/run/sink.h"

namespace importers {

namespace {

ImportSummary summaryOf(const Outline& outline, const Choice& choice, int histories) {
  ImportSummary summary;
  std::set<std::string> fields;
  for (std::size_t step = 0; step < outline.steps.size(); ++step) {
    if (!choice.takesStep(step)) continue;
    ++summary.steps;
    std::set<std::size_t> frames;
    for (std::size_t field = 0; field < outline.steps[step].fields.size(); ++field) {
      for (const OutlineRows& rows : outline.steps[step].fields[field].frames) {
        if (!choice.takes({step, field, rows.frame})) continue;
        frames.insert(rows.frame);
        fields.insert(outline.steps[step].fields[field].name);
      }
    }
    summary.frames += static_cast<int>(frames.size());
  }
  summary.fields = static_cast<int>(fields.size());
  summary.histories = histories;
  for (std::size_t set = 0; set < outline.sets.size(); ++set) summary.sets += choice.takesSet(set) ? 1 : 0;
  summary.cutOffBehind = outline.truncatedAfter;
  return summary;
}

ImportSummary write(Source& source, const Outline& outline, const ImportRequest& request, const WarningSink& warn,
                    const ProgressSink& progress) {
  const Choice choice = choose(outline, request.selection, request.results);
  std::set<FieldId> irregular;
  for (;;) {
    odbstore::DatabaseWriter writer(request.output, request.storage);
    Sink sink(outline, choice, irregular, request.results, writer, warn);
    std::uint64_t bytes = 1;
    source.deliver(choice, sink, [&](std::uint64_t done, std::uint64_t all) {
      bytes = all;
      if (progress) progress(done, all);
    });
    sink.finish();
    if (sink.newlyIrregular().empty()) {
      if (progress) progress(bytes, bytes);
      writer.finish();
      return summaryOf(outline, choice, sink.histories());
    }
    irregular.insert(sink.newlyIrregular().begin(), sink.newlyIrregular().end());
  }
}

void giveNames(Outline& outline, const ImportRequest& request, const WarningSink& warn) {
  nameFields(outline, request.naming, request.results, warn);
  keepNamesApart(outline, request.results, warn);
}

}  // namespace

ImportSummary runImport(Source& source, const ImportRequest& request, const WarningSink& warnOfAll,
                        const ProgressSink& progress) {
  const WarningSink warn = onceOnly(warnOfAll);
  Outline outline = source.outline();
  giveNames(outline, request, warn);
  try {
    return write(source, outline, request, warn, progress);
  } catch (const ImportError&) {
    if (!source.leaveOutDamage(outline)) throw;
  }
  giveNames(outline, request, warn);
  return write(source, outline, request, warn, progress);
}

Outline listImport(Source& source, const ImportRequest& request, const WarningSink& warn) {
  Outline outline = source.outline();
  giveNames(outline, request, warn);
  const Choice choice = choose(outline, request.selection, request.results);
  keepChosen(outline, choice);
  return outline;
}

}  // namespace importers
