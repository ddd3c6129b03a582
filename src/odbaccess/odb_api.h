// Everything of the access library: the one header that the extraction includes.
#pragma once

#include "odbaccess/nex_Exception.h"
#include "odbaccess/odb_Enum.h"
#include "odbaccess/odb_Exception.h"
#include "odbaccess/odb_FieldBulkData.h"
#include "odbaccess/odb_FieldOutput.h"
#include "odbaccess/odb_FieldValue.h"
#include "odbaccess/odb_History.h"
#include "odbaccess/odb_Odb.h"
#include "odbaccess/odb_Repository.h"
#include "odbaccess/odb_Sequence.h"
#include "odbaccess/odb_Set.h"
#include "odbaccess/odb_Step.h"
#include "odbaccess/odb_String.h"
