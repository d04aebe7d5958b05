#pragma once

class QDialog;

/// Shows a dialog as a sheet: modal for the window it belongs to, so that
/// the rest of the program stays usable; a dialog of no window is modal for
/// the program. Returns at once; the dialog reports its answer by signal.
class KZSheet
{
public:
    static void show(QDialog *dialog);
};
