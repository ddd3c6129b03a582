#include "inspect/configuration_effect.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "base/control_characters.h"
#include "odbstore/layout.h"
#include "odbstore/stored_step.h"
#include "result/configuration_keywords.h"

namespace inspect {

namespace {

bool takesFields(const ExtractionSwitches& switches) {
  return switches.wantsAllFieldOutputs() || switches.stress || switches.spatial || switches.element;
}

// Collects remarks on keywords that are set.
class KeywordRemarks {
 public:
  explicit KeywordRemarks(const Configuration& configuration) : configuration_(configuration) {}

  // Where the keyword is set.
  void say(bool ExtractionSwitches::*target, const std::string& reason) {
    const auto keyword = std::find_if(kSwitchKeywords.begin(), kSwitchKeywords.end(),
                                      [&](const SwitchKeyword& known) { return known.target == target; });
    if (configuration_.switches.*target != keyword->value) return;
    remarks_.push_back({lineOf(keyword->text), fmt::format("{} {}", keyword->text, reason)});
  }
  void sayOfPercentage(const std::string& reason) {
    const std::size_t line = lineOf(kPercentageKeyword);
    if (line > 0) remarks_.push_back({line, fmt::format("{} {}", kPercentageKeyword, reason)});
  }
  void sayAtLarge(std::string reason) { remarks_.push_back({0, std::move(reason)}); }

  Remarks take() {
    std::stable_sort(remarks_.begin(), remarks_.end(),
                     [](const Remark& a, const Remark& b) { return a.line < b.line; });
    return std::move(remarks_);
  }

 private:
  // From 1; that of the keyword itself rather than of a longer word that contains it. 0 where there is none.
  std::size_t lineOf(std::string_view keyword) const {
    std::size_t contained = 0;
    for (std::size_t i = configuration_.start.value_or(configuration_.lines.size()); i < configuration_.lines.size();
         ++i) {
      const std::string& line = configuration_.lines[i];
      const std::size_t at = line.find(keyword);
      if (at == std::string::npos) continue;
      const bool isWhole = at + keyword.size() == line.size() || line[at + keyword.size()] != '_';
      if (isWhole) return i + 1;
      if (contained == 0) contained = i + 1;
    }
    return contained;
  }

  const Configuration& configuration_;
  Remarks remarks_;
};

using S = ExtractionSwitches;

void remarkOnFields(const ExtractionSwitches& switches, KeywordRemarks& remarks) {
  constexpr std::array kOfFields = {&S::allFieldOutputs, &S::stress,         &S::spatial,         &S::element,
                                    &S::engineeringMin,  &S::engineeringMax, &S::tensorInvariants};
  if (!switches.field) {
    for (const auto target : kOfFields) remarks.say(target, "has no effect without EXTRACT_FIELD");
    return;
  }
  if (!takesFields(switches)) {
    remarks.say(&S::field,
                "takes no field: it needs EXTRACT_ALL, EXTRACT_STRESS, EXTRACT_SPATIAL or EXTRACT_ELEMENT beside it");
    return;
  }
  const char* const beside = switches.tensorInvariants ? "TENSOR_INVARIANTS" : "EXTRACT_ALL";
  if (switches.wantsAllFieldOutputs()) {
    for (const auto target : {&S::stress, &S::spatial, &S::element}) {
      remarks.say(target, fmt::format("has no effect beside {}, which takes all fields", beside));
    }
  }
}

void remarkOnPercentage(const ExtractionSwitches& switches, KeywordRemarks& remarks) {
  if (!switches.wantsEngineering()) {
    remarks.sayOfPercentage("has no effect without ENGINEERING_MAX or ENGINEERING_MIN");
  } else if (switches.percentage == 0 && switches.field) {
    remarks.say(&S::engineeringMax, "gives the same as the plain maximum while PERCENTAGE is 0");
    remarks.say(&S::engineeringMin, "gives the same as the plain minimum while PERCENTAGE is 0");
  }
}

bool hasComponents(int type) {
  return odbstore::isTensorType(type) || odbstore::FieldType{type} == odbstore::FieldType::vector;
}

void remarkOnTaken(const Configuration& configuration, const std::vector<FieldContents>& fields, bool hasSets,
                   KeywordRemarks& remarks) {
  const ExtractionSwitches& switches = configuration.switches;
  if (!switches.field || !takesFields(switches)) return;
  const auto isTaken = [&](const FieldContents& field) { return wantsFieldOutput(switches, field.info.description); };
  for (const DescriptionKeyword& keyword : kDescriptionKeywords) {
    if (switches.wantsAllFieldOutputs()) break;
    const bool takes = std::any_of(fields.begin(), fields.end(), [&](const FieldContents& field) {
      return field.changes || field.info.description.find(keyword.word) != std::string::npos;
    });
    if (!takes)
      remarks.say(keyword.target, fmt::format("takes nothing: no field has \"{}\" in its description", keyword.word));
  }
  if (switches.wantsAllFieldOutputs() && fields.empty()) {
    remarks.say(switches.tensorInvariants ? &S::tensorInvariants : &S::allFieldOutputs,
                "takes nothing: there are no fields");
  }
  if (!hasSets) remarks.say(&S::fieldSets, "has no effect: there are no sets");
  const bool areComponents = std::any_of(fields.begin(), fields.end(), [&](const FieldContents& field) {
    return isTaken(field) && hasComponents(field.info.type);
  });
  if (!areComponents) remarks.say(&S::fieldComponents, "has no effect: no field that is taken has components");
  const bool areInvariants = std::any_of(fields.begin(), fields.end(), [](const FieldContents& field) {
    return field.name == "S" && !invariantEndings(field.info.validInvariants, {}).empty();
  });
  if (!areInvariants || !hasSets) {
    remarks.say(&S::tensorInvariants, areInvariants ? "gives no invariants: there are no sets"
                                                    : "gives no invariants: no field S names any as valid");
  }
}

}  // namespace

Remarks effectRemarks(const Configuration& configuration) {
  KeywordRemarks remarks(configuration);
  const ExtractionSwitches& switches = configuration.switches;
  remarks.say(&S::absoluteMax, "never has an effect: plain extremes are always written");
  remarks.say(&S::absoluteMin, "never has an effect: plain extremes are always written");
  remarks.say(&S::computeValues, "makes every value 0");
  remarkOnFields(switches, remarks);
  remarkOnPercentage(switches, remarks);
  return remarks.take();
}

bool takesAnything(const ExtractionSwitches& switches) {
  return switches.mass || switches.history || switches.historyExtremes || (switches.field && takesFields(switches));
}

std::vector<FieldChoice> fieldChoices(const std::vector<FieldContents>& fields, const ExtractionSwitches& switches) {
  std::vector<FieldChoice> choices;
  for (const FieldContents& field : fields) {
    FieldChoice choice{&field, switches.field && wantsFieldOutput(switches, field.info.description), {}};
    const std::vector<std::string_view> all = takingKeywords(field.info.description);
    for (const SwitchKeyword& keyword : kSwitchKeywords) {
      const bool takes = std::find(all.begin(), all.end(), keyword.text) != all.end();
      if (takes && (!choice.isTaken || switches.*keyword.target)) choice.keywords.push_back(keyword.text);
    }
    if (choice.isTaken && switches.tensorInvariants) choice.keywords.emplace_back("TENSOR_INVARIANTS");
    choices.push_back(std::move(choice));
  }
  return choices;
}

Remarks databaseRemarks(const Configuration& configuration, const RecordList& records, const RecordList::Count& count,
                        const std::vector<FieldContents>& fields) {
  KeywordRemarks remarks(configuration);
  const ExtractionSwitches& switches = configuration.switches;
  if (count.mass == 0 && !count.end) remarks.say(&S::mass, "gives nothing: no step has a mass");
  if (switches.history || switches.historyExtremes) {
    if (count.histories == 0 && !count.end) {
      remarks.say(&S::history, "gives nothing: there are no histories");
      remarks.say(&S::historyExtremes, "gives nothing: there are no histories with samples");
    }
  }
  const std::vector<ModelSet>& sets = records.sets();
  const bool hasSets = std::any_of(sets.begin(), sets.end(), [](const ModelSet& set) { return !set.isLeftOut; });
  remarkOnTaken(configuration, fields, hasSets, remarks);
  if (count.end) {
    remarks.sayAtLarge(
        fmt::format("the run ends with an error after {} records: field {} over the set {}, step {}: components in "
                    "double precision "
                    "are not read",
                    count.all(), base::escaped(count.end->field), base::escaped(count.end->set->name),
                    base::escaped(records.steps()[count.end->step]->name())));
  }
  return remarks.take();
}

}  // namespace inspect
