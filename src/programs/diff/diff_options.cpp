#include "diff_options.h"

#include <cmath>
#include <cstdlib>

namespace inspect {

namespace {

double toleranceFrom(const std::string& text) {
  char* end = nullptr;
  const double number = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !std::isfinite(number) || number < 0.0)
    throw tool::UsageError("\"" + text + "\" is not a number from 0 on");
  return number;
}

}  // namespace

tool::Command diffCommand(DiffOptions& options) {
  tool::Command command("kolvex diff", "compare the records of two runs");
  command.synopsis("A B [options]")
      .describe(
          "Compares two files of records (params.txt), two directories with one each, or what is extracted from two "
          "databases, and prints what differs: the largest differences first, as a share of the larger value, then "
          "names "
          "that only one of them has. NaN never agrees with a number.")
      .describe(
          "From databases everything is extracted unless --config says what, and each difference is printed with the "
          "places of its values.")
      .exitStatus(0, "nothing differs by more than it may")
      .exitStatus(1, "something differs, or a name is missing on one side")
      .exitStatus(2, "trouble: wrong usage, or a file cannot be read")
      .example("kolvex diff reference/params.txt params.txt --rel 1e-4")
      .example("kolvex diff old.odb new.odb --config extract.cfg --tolerances tolerances.txt --json")
      .seeAlso("kolvex-locate(1)")
      .seeAlso("kolvex-run(1)");
  command.argument("A", options.a, "a file of records, a directory with one, or a database")
      .argument("B", options.b, "what it is compared with")
      .option(
          "--abs", "NUMBER", [&options](const std::string& text) { options.tolerance.absolute = toleranceFrom(text); },
          "ignore differences up to this (default: 0)")
      .option(
          "--rel", "NUMBER", [&options](const std::string& text) { options.tolerance.relative = toleranceFrom(text); },
          "ignore differences up to this share of the larger value (default: 0)")
      .option("--tolerances", "FILE", options.tolerances,
              "tolerances by pattern of names: lines of a pattern and abs=NUMBER, rel=NUMBER or ignore",
              tool::Completes::file)
      .option("--config", "FILE", options.configuration,
              "the configuration, which says what is extracted from databases", tool::Completes::file)
      .option(
          "--odb", "DATABASE", [&options](const std::string& path) { options.databases.push_back(path); },
          "the database of a file of records, to tell where values are: of A, given again of B", tool::Completes::file)
      .repeated()
      .number("--top", "N", options.most, 0, 1'000'000'000, "print the N largest differences, 0 for all (default: 20)")
      .flag("-q,--quiet", options.isQuiet, "print nothing; only the status says whether they differ")
      .flag("--json", options.isJson, "print a JSON object");
  return command;
}

}  // namespace inspect
