#pragma once

#include <string>
#include <vector>

#include "platform/prefs/specifier.h"

namespace velto {

// The rows that show a picture the user chose ("Default Avatar" and its kin) wear their icon
// round or square as the rounded-pictures setting says.

// Whether a row is one of the named picture rows.
bool isPictureRow(const plat::Specifier& row, const std::vector<std::string>& names);
// Cuts one row's icon round or square. The icon is handed over even when the row has none;
// whatever comes back empty leaves the old icon in place.
void reshapePictureIcon(plat::Specifier& row, bool round);
// Every named picture row of a list.
void reshapePictureRows(const plat::SpecifierArrayPtr& rows, const std::vector<std::string>& names,
                        bool round);
// Whether a row about to be inserted needs its icon cut first: a named picture row that has
// one. Asked before the setting is read, so other rows cost no read.
bool needsReshapeOnInsert(const plat::SpecifierPtr& row, const std::vector<std::string>& names);

}  // namespace velto
