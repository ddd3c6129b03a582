// What goes into a page first when not all has room.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace report {

// One field in one frame, or the details of it: the components of a tensor, from which the page derives all quantities
// but the equivalent stress, which comes with the field itself.
struct Candidate {
  std::size_t step = 0;
  int frame = 0;
  std::string field;
  bool isDetail = false;

  bool operator==(const Candidate&) const = default;
};

struct StepFields {
  int frames = 0;
  struct Field {
    std::string name;
    bool isTensor = false;
    std::vector<int> frames;  // that have it
  };
  std::vector<Field> fields;
};

// The last frame of every step with all fields; displacements (U) and stresses (S) of the other frames; the other
// fields of those; details in the same order. Of the frames of a step the last comes first, then the first, then the
// one in the middle of them, then those in the middles of the halves, and so on; steps take turns.
std::vector<Candidate> byImportance(const std::vector<StepFields>& steps);

// 0 to count - 1 in that order.
std::vector<int> spread(int count);

}  // namespace report
