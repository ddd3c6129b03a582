// Gathers the elements of a result file by their type codes.
#pragma once

#include <array>
#include <span>

#include "importers/calculix/frd/element_codes.h"
#include "importers/calculix/frd/frd_blocks.h"
#include "importers/calculix/frd/frd_lines.h"

namespace importers::calculix {

class ElementGatherer {
 public:
  ElementGatherer(const FrdLines& lines, FrdElements& elements) : lines_(lines), elements_(elements) {}

  // How many nodes an element of that code has; an unknown code is an ImportError.
  std::size_t nodesOf(int code) const;
  // `nodes` are as many as nodesOf(code), in file order.
  void add(int label, int code, std::span<const int> nodes);

 private:
  const FrdLines& lines_;
  FrdElements& elements_;
  std::array<std::size_t, kElementCodes + 1> groupOfCode_{};  // 0: none yet, else its place + 1
};

}  // namespace importers::calculix
