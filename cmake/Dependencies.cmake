find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
pkg_check_modules(PLIST REQUIRED IMPORTED_TARGET libplist-2.0)
pkg_check_modules(CAIRO REQUIRED IMPORTED_TARGET cairo)
pkg_check_modules(PNG REQUIRED IMPORTED_TARGET libpng)
pkg_check_modules(JPEG REQUIRED IMPORTED_TARGET libjpeg)
# A photo's orientation lives in its EXIF block, not in its pixels.
pkg_check_modules(EXIF REQUIRED IMPORTED_TARGET libexif)
# NSString's regular expressions, normalisation and case folding are ICU's on the device too.
pkg_check_modules(ICU REQUIRED IMPORTED_TARGET icu-uc icu-i18n)
# Screenshots: text through Pango over cairo, in a font loaded through a private fontconfig.
pkg_check_modules(PANGO REQUIRED IMPORTED_TARGET pangocairo pangoft2 fontconfig)
# Content hashes of pictures in the simulator's JSON record: GLib's SHA-256 (GLib is already
# there under Pango).
pkg_check_modules(GLIB REQUIRED IMPORTED_TARGET glib-2.0)
# Where a property list in XML breaks, by line and column: libplist only says that it does.
pkg_check_modules(XML2 REQUIRED IMPORTED_TARGET libxml-2.0)
