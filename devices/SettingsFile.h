#pragma once

#include <QString>

/// The file that keeps the user's choices and the start counter between runs (INI form, keys at top level):
/// HOME followed by "/.config/norvane/Tavorin_Qt.ini". Without HOME that path is taken from the root.
QString SettingsFilePath();
