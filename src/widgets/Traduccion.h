#pragma once

// Qt's own Spanish catalogue for the texts Qt draws itself (standard
// buttons, the file dialog, the date pickers), and Spanish as the default
// locale. Needs a running QApplication; false when the catalogue is not
// installed, and the program then goes on with Qt's English texts.
bool cargarTraduccionQt();
