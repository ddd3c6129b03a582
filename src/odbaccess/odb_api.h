// Everything of the access library: the one header that programs include.
//
//     #include <odbaccess/odb_api.h>
//
//     int main() {
//       odb_initializeAPI();
//       try {
//         odb_Odb& odb = openOdb("lug.odb", true, false);
//         std::printf("%d steps\n", odb.steps().size());
//         odb.close();
//       } catch (const nex_Exception& error) {
//         std::fprintf(stderr, "%s\n", error.UserReport().cStr());
//       }
//       odb_finalizeAPI();
//     }
//
// An odb_Odb has parts, an assembly with instances and sets, and steps (odb_Odb.h). A step has frames (odb_Step.h), a
// frame has field outputs (odb_Frame.h), a field output has rows (odb_FieldOutput.h); a step also has history regions
// with history outputs (odb_HistoryRegion.h). Every failure is an odb_Exception. Labels are those of the solver,
// indices begin at 0, units are those of the model. One thread at a time may use the library.
#pragma once

#include "odbaccess/nex_Exception.h"
#include "odbaccess/odb_Assembly.h"
#include "odbaccess/odb_DiscreteEntity.h"
#include "odbaccess/odb_Enum.h"
#include "odbaccess/odb_Exception.h"
#include "odbaccess/odb_FieldBulkData.h"
#include "odbaccess/odb_FieldBulkTile.h"
#include "odbaccess/odb_FieldLocation.h"
#include "odbaccess/odb_FieldOutput.h"
#include "odbaccess/odb_FieldValue.h"
#include "odbaccess/odb_FieldValueRun.h"
#include "odbaccess/odb_Frame.h"
#include "odbaccess/odb_HistoryOutput.h"
#include "odbaccess/odb_HistoryPoint.h"
#include "odbaccess/odb_HistoryRegion.h"
#include "odbaccess/odb_Instance.h"
#include "odbaccess/odb_Odb.h"
#include "odbaccess/odb_Part.h"
#include "odbaccess/odb_Repository.h"
#include "odbaccess/odb_SectionPoint.h"
#include "odbaccess/odb_SectorDefinition.h"
#include "odbaccess/odb_Sequence.h"
#include "odbaccess/odb_SequenceFieldValue.h"
#include "odbaccess/odb_Set.h"
#include "odbaccess/odb_Step.h"
#include "odbaccess/odb_StepRepository.h"
#include "odbaccess/odb_String.h"
