// Prints how large a field is in every frame of a database, over the model or over an element set of the assembly:
//
//     read_database lug.odb S RIM
//     Step-1  1  407.608
//
// Of a tensor it is the largest equivalent stress, of a vector the largest magnitude, of a scalar the largest value.

#include <odbaccess/odb_api.h>

#include <algorithm>
#include <cstdio>
#include <limits>

namespace {

double sizeOf(const odb_FieldValue& value) {
  if (odb_isTensor(value.type())) return value.mises();
  if (value.type() == odb_Enum::vector) return value.magnitude();
  const bool isDouble = value.precision() == odb_Enum::doublePrecision;
  return isDouble ? value.doubleData()[0] : static_cast<double>(value.floatData()[0]);
}

double largestOf(const odb_FieldOutput& field) {
  double largest = -std::numeric_limits<double>::infinity();
  const odb_SequenceFieldValue& values = field.values();
  for (int i = 0; i < values.size(); ++i)
    largest = std::max(largest, sizeOf(values.constGet(static_cast<unsigned>(i))));
  return largest;
}

// `setName` is null for the whole model.
void printSizes(odb_Odb& odb, const char* fieldName, const char* setName) {
  odb_StepRepositoryIT steps(odb.steps());
  for (steps.first(); !steps.isDone(); steps.next()) {
    const odb_SequenceFrame& frames = odb.steps()[steps.currentKey()].frames();
    for (int i = 0; i < frames.size(); ++i) {
      const odb_Frame frame = frames.constGet(i);  // a copy: what it reads goes with it
      const odb_FieldOutput* const field = frame.fieldOutputs().ConstFind(fieldName);
      if (field == nullptr) continue;
      const double largest = setName == nullptr
                                 ? largestOf(*field)
                                 : largestOf(field->getSubset(odb.rootAssembly().elementSets(false)[setName]));
      std::printf("%s  %d  %g\n", steps.currentKey().cStr(), frame.incrementNumber(), largest);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3 || argc > 4) {
    std::fprintf(stderr, "usage: read_database DATABASE FIELD [SET]\n");
    return 2;
  }
  int status = 0;
  odb_initializeAPI();
  try {
    odb_Odb& odb = openOdb(argv[1], true, false);
    printSizes(odb, argv[2], argc == 4 ? argv[3] : nullptr);
    odb.close();
  } catch (const nex_Exception& error) {
    std::fprintf(stderr, "%s\n", error.UserReport().cStr());
    status = 1;
  }
  odb_finalizeAPI();
  return status;
}
