#include "contract/picture_rows.h"

#include <algorithm>

#include "contract/velto_utils.h"
#include "platform/ui/image.h"

namespace velto {

bool isPictureRow(const plat::Specifier& row, const std::vector<std::string>& names) {
    return row.name() && std::find(names.begin(), names.end(), *row.name()) != names.end();
}

void reshapePictureIcon(plat::Specifier& row, bool round) {
    const auto icon = row.propertyForKey(plat::pskey::IconImage).as<plat::Image>();
    const auto shaped = round ? VeltoUtils::roundedImage(icon) : VeltoUtils::squareImage(icon);
    if (shaped) row.setProperty(plat::Value(shaped), plat::pskey::IconImage);
}

void reshapePictureRows(const plat::SpecifierArrayPtr& rows, const std::vector<std::string>& names,
                        bool round) {
    if (!rows) return;
    for (const auto& row : *rows)
        if (isPictureRow(*row, names)) reshapePictureIcon(*row, round);
}

bool needsReshapeOnInsert(const plat::SpecifierPtr& row, const std::vector<std::string>& names) {
    return row && !row->propertyForKey(plat::pskey::IconImage).isNil() && isPictureRow(*row, names);
}

}  // namespace velto
