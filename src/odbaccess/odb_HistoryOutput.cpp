#include "odbaccess/odb_HistoryOutput.h"

#include <cstddef>
#include <span>
#include <vector>

#include "odbaccess/guard.h"
#include "odbaccess/history_output_storage.h"

odb_String odb_HistoryOutput::name() const { return odb_String(storage_->name); }

odb_SequenceSequenceFloat odb_HistoryOutput::data() const {
  const odbstore::HistorySamples samples =
      odb_detail::guarded([&] { return storage_->step->historySamples(storage_->region, storage_->name); });
  const auto width = static_cast<std::size_t>(samples.width);
  const std::span<const float> numbers(samples.numbers);
  std::vector<odb_SequenceFloat> rows;
  rows.reserve(static_cast<std::size_t>(samples.samples));
  for (std::size_t i = 0; i < static_cast<std::size_t>(samples.samples); ++i) {
    rows.emplace_back(numbers.subspan(i * width, width));
  }
  return odb_SequenceSequenceFloat(std::move(rows));
}
