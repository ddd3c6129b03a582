// The records of one quantity.
#pragma once

#include <array>
#include <ostream>
#include <string_view>
#include <utility>

#include "odbaccess/odb_api.h"
#include "reduce/extremes.h"
#include "reduce/reduction_results.h"
#include "result/record_line.h"
#include "result/record_name.h"

// The four extremes and the tokens that they are written under.
enum class Extreme { max, min, engineeringMax, engineeringMin };

// "__max\t", "__min\t", "__enggmax\t", "__enggmin\t".
std::string_view extremeToken(Extreme extreme);

// Writes the records of a field over one region. A quantity is "__mises", "__11" ...; empty for scalars.
class ExtremesWriter {
 public:
  // The stream is to live as long.
  ExtremesWriter(std::ostream& out, RecordHead head) : out_(out), line_(std::move(head).take()) {}

  // One record: the head, the quantity, the token, the value.
  void write(std::string_view quantity, Extreme extreme, double value);

  // The records of a quantity in the usual order: maximum, minimum, then the engineering maximum and minimum under
  // their switches.
  void writeAll(std::string_view quantity, const Extremes& extremes);

  // The records of a vector's components: maximum and minimum of each, then under its switch the engineering maximum
  // of each, then the engineering minimum of each, the latter under the token of `engineeringMin`.
  void writeVector(const std::array<Extremes, kVectorComponents>& components, Extreme engineeringMin);

 private:
  std::ostream& out_;
  RecordLine line_;
};

// "__11" ... and "__1" ...
inline constexpr std::array<std::string_view, 6> kTensorQuantities = {"__11", "__22", "__33", "__12", "__13", "__23"};
inline constexpr std::array<std::string_view, 3> kVectorQuantities = {"__1", "__2", "__3"};

// An invariant that can be reduced: its code and its quantity token. Its place in the table is the slot under which a
// value gives it. The three in-plane and out-of-plane spellings differ in their underscores; readers of the records
// know them so.
struct InvariantQuantity {
  odb_InvariantEnum code;
  std::string_view quantity;
};
inline constexpr std::array<InvariantQuantity, 9> kInvariantQuantities = {{
    {odb_Enum::tresca, "__tresca"},
    {odb_Enum::press, "__press"},
    {odb_Enum::inv3, "__inv3"},
    {odb_Enum::maxPrincipal, "__maxprincipal"},
    {odb_Enum::midPrincipal, "__midprincipal"},
    {odb_Enum::minPrincipal, "__minprincipal"},
    {odb_Enum::maxInPlanePrincipal, "__maxinplaneprincipal"},
    {odb_Enum::minInPlanePrincipal, "__mininplane_principal"},
    {odb_Enum::outOfPlanePrincipal, "__outofplane_principal"},
}};

// Whether a region tag keeps its set out of the result file: sets of warnings and information.
bool isScreenedRegion(const odb_String& regionTag);

// Cuts every label down to its last two characters, in place, and tells which tensor components they name.
ComponentFlags cutToComponents(odb_Sequence<odb_String>& labels);
