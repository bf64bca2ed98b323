#pragma once
// Everything a host needs to embed diagrams: the package functions and the public classes.
//   #include <velDiagEdit/velDiagEdit.h>

#include "velDiagEdit/blocks/diag_object.h"
#include "velDiagEdit/blocks/diag_object_list.h"
#include "velDiagEdit/commands/diag_actions.h"
#include "velDiagEdit/commands/diag_actions_list.h"
#include "velDiagEdit/connections/diag_connect_list.h"
#include "velDiagEdit/connections/diag_connection.h"
#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/package/diag_package.h"
#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/host_program.h"
#include "velDiagEdit/timechart/time_chart.h"
