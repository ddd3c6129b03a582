// What the configuration file asks for.
#pragma once

// Set while the configuration file is read, read-only afterwards.
struct ExtractionSwitches {
  bool mass = false;
  bool history = false;
  bool historyExtremes = false;
  bool field = false;
  bool allFieldOutputs = false;
  bool stress = false;
  bool spatial = false;
  bool element = false;
  bool fieldSets = false;
  bool fieldComponents = false;
  // Off: records are written with 0 in place of each value.
  bool computeValues = true;
  // Accepted in configuration files and without effect: the plain extremes are always written.
  bool absoluteMax = false;
  bool absoluteMin = false;
  bool engineeringMin = false;
  bool engineeringMax = false;
  bool tensorInvariants = false;
  // How many of the most extreme values, in percent, the engineering extremes pass over.
  double percentage = 0.0;

  // Whether either engineering extreme is asked for.
  bool wantsEngineering() const { return engineeringMin || engineeringMax; }
  // Whether every field output is taken, whatever its description.
  bool wantsAllFieldOutputs() const { return allFieldOutputs || tensorInvariants; }
};

// The one set of switches of the process.
ExtractionSwitches& extractionSwitches();
