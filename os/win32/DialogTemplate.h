// DialogTemplate: the table of a dialog as the template that the system makes windows from.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "os/desktop/Dialog.h"

namespace os {

// The character set of the dialog's texts: CP_ACP or CP_UTF8.
unsigned CodePageOf(const DialogTable& table);

// The window identifier of the control in a row. The default and cancel buttons carry the system's own (IDOK,
// IDCANCEL), which Enter and Esc send; the rest are numbered by their rows.
int ControlWindowId(const DialogTable& table, std::size_t row);

// The height of its window in dialog units: of a drop-down list that of the opened one.
short TemplateHeight(const Control& control);

// DLGTEMPLATEEX (MSDN) of the dialog itself, with the controls that lie on no page, or of one page of its tab
// strip, a child window without frame and caption. Aligned for CreateDialogIndirectParam.
std::vector<std::uint32_t> DialogTemplate(const DialogTable& table, int page);

// Captions are shown as they are, but the system takes "&" for the mark of an access key; "&&" is the
// character.
std::string WithAccessKeyMarks(std::string_view caption);
std::string WithoutAccessKeyMarks(std::string_view title);

}  // namespace os
