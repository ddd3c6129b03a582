#include "result/number_format.h"

#include <cmath>
#include <iterator>
#include <string>

namespace {

constexpr std::size_t kExponentDigits = 3;

// The standard facet, writing into a string.
class TextPut : public std::num_put<char, std::back_insert_iterator<std::string>> {
 public:
  TextPut() : num_put(1) {}
};

class ResultNumPut : public std::num_put<char> {
 protected:
  iter_type do_put(iter_type out, std::ios_base& stream, char fill, double value) const override {
    return put(out, stream, fill, value);
  }
  iter_type do_put(iter_type out, std::ios_base& stream, char fill, long double value) const override {
    return put(out, stream, fill, value);
  }

 private:
  template <class Number>
  static iter_type put(iter_type out, std::ios_base& stream, char fill, Number value) {
    static const TextPut standard;
    std::string text;
    // The sign of a NaN says nothing to a reader of results.
    standard.put(std::back_inserter(text), stream, fill, std::isnan(value) ? std::abs(value) : value);
    widenExponent(text);
    return std::copy(text.begin(), text.end(), out);
  }

  static void widenExponent(std::string& text) {
    const std::size_t mark = text.find_first_of("eE");
    if (mark == std::string::npos || mark + 2 >= text.size()) return;
    const std::size_t digits = text.find_last_of("0123456789") - (mark + 1);
    if (digits < kExponentDigits) text.insert(mark + 2, kExponentDigits - digits, '0');
  }
};

}  // namespace

std::locale resultLocale() { return std::locale(std::locale::classic(), new ResultNumPut); }
