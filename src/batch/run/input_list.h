// Which inputs a batch has, from what its user names.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "batch/state/batch_directory.h"

namespace batch {

// The given names are not a valid list of inputs; the text says which and why.
class InputListError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The names in a text, one a line; empty lines and a carriage return at the end of a line are dropped.
std::vector<std::string> namesIn(const std::string& text);

// An input for each name, in their order, each once. A name under which there is nothing and that has one of "*?["
// stands for the files that it matches, by name. Relative names count from the working directory; links are not
// followed. A name need not be there otherwise: that shows when it is its turn. Throws InputListError for a pattern
// that matches nothing, a directory, and a name with a line break in it.
std::vector<BatchInput> inputsNamed(const std::vector<std::string>& names);

// Every `size`-th input, the one with the number `index` (from 0) being the first.
std::vector<BatchInput> sliceOf(const std::vector<BatchInput>& inputs, std::size_t index, std::size_t size);

}  // namespace batch
