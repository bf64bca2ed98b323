#pragma once
// Everything a host uses from velDiagEdit in one include: <velDiagEdit/velDiagEdit.h>. Each
// header below can also be included on its own.

#include "velDiagEdit/velDiagEdit_export.h"
#include "velDiagEdit/velDiagEdit_version.h"

#include "velDiagEdit/platform/canvas.h"
#include "velDiagEdit/platform/colors.h"
#include "velDiagEdit/platform/components.h"
#include "velDiagEdit/platform/controls.h"
#include "velDiagEdit/platform/convert.h"
#include "velDiagEdit/platform/dark_palette.h"
#include "velDiagEdit/platform/dataset.h"
#include "velDiagEdit/platform/dialog_service.h"
#include "velDiagEdit/platform/enum_names.h"
#include "velDiagEdit/platform/errors.h"
#include "velDiagEdit/platform/event_boundary.h"
#include "velDiagEdit/platform/host_program.h"
#include "velDiagEdit/platform/ini_file.h"
#include "velDiagEdit/platform/input_state.h"
#include "velDiagEdit/platform/menus.h"
#include "velDiagEdit/platform/paint_hook.h"
#include "velDiagEdit/platform/painter_backend.h"
#include "velDiagEdit/platform/panel.h"
#include "velDiagEdit/platform/recording_backend.h"
#include "velDiagEdit/platform/stored_bytes.h"
#include "velDiagEdit/platform/streams.h"
#include "velDiagEdit/platform/translations.h"
#include "velDiagEdit/platform/types.h"

#include "velDiagEdit/geometry/codecs.h"
#include "velDiagEdit/geometry/diag_types.h"
#include "velDiagEdit/geometry/geometry.h"

#include "velDiagEdit/blocks/control_list.h"
#include "velDiagEdit/blocks/diag_object.h"
#include "velDiagEdit/blocks/diag_object_list.h"
#include "velDiagEdit/blocks/diag_rs_trigger.h"
#include "velDiagEdit/blocks/diag_text.h"

#include "velDiagEdit/connections/diag_connect_list.h"
#include "velDiagEdit/connections/diag_connection.h"

#include "velDiagEdit/simulation/diag_simulator.h"
#include "velDiagEdit/simulation/stimuli.h"
#include "velDiagEdit/simulation/vcd.h"

#include "velDiagEdit/editor/diag_container.h"
#include "velDiagEdit/editor/diag_messages.h"
#include "velDiagEdit/editor/simulation_chart.h"

#include "velDiagEdit/commands/bin_utils.h"
#include "velDiagEdit/commands/diag_actions.h"
#include "velDiagEdit/commands/diag_actions_list.h"
#include "velDiagEdit/commands/table_diag_actions.h"

#include "velDiagEdit/handles/move_resize.h"

#include "velDiagEdit/dialogs/dialog_controls.h"
#include "velDiagEdit/dialogs/edit_segment_params.h"
#include "velDiagEdit/dialogs/edit_size_value.h"
#include "velDiagEdit/dialogs/qt_dialog_service.h"
#include "velDiagEdit/dialogs/scripted_dialog_service.h"
#include "velDiagEdit/dialogs/select_item_dlg.h"

#include "velDiagEdit/timechart/time_chart.h"
#include "velDiagEdit/timechart/time_chart_export.h"
#include "velDiagEdit/timechart/time_chart_sample.h"

#include "velDiagEdit/package/changed_elsewhere_bar.h"
#include "velDiagEdit/package/diag_package.h"
#include "velDiagEdit/package/diag_storage_events.h"
#include "velDiagEdit/package/diagram_widget.h"
#include "velDiagEdit/package/version.h"
