#include "device/generated_apps.h"

#include <cctype>
#include <set>
#include <string>
#include <tuple>

#include "device/app_icon.h"
#include "device/glyphs.h"

namespace velto::device {

namespace {

const char* const kSyllables[] = {"ka", "lo", "mi", "nu", "pe", "ra", "so", "ti",
                                  "va", "ze", "bo", "du", "fi", "go", "he", "ju"};

// Base-16 digits of n + 16, so every n has at least two syllables and no two n share a word.
std::string wordFor(int n) {
    std::string word;
    for (unsigned v = static_cast<unsigned>(n) + 16; v; v /= 16)
        word.insert(0, kSyllables[v % 16]);
    return word;
}

std::string casedName(const std::string& word, int n) {
    std::string name = word;
    switch (n % 3) {
        case 0:  // all lower case
            break;
        case 1:  // Capitalised
            name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
            break;
        default:  // inner capital
            name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
            name[2] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[2])));
            break;
    }
    return name;
}

}  // namespace

std::vector<AppChoice> generatedUserApps(int count) {
    std::vector<AppChoice> apps;
    std::set<std::tuple<double, double, double, const Glyph*>> icons;
    for (int n = 0; n < count; ++n) {
        const std::string word = wordFor(n);
        const std::string name = casedName(word, n);
        // The icon is the identifier's colour with the name's first letter: try identifiers
        // until the pair is new.
        for (int attempt = 0;; ++attempt) {
            std::string id = "com.example.generated." + word;
            if (attempt) id += std::to_string(attempt);
            const IconColor color = iconColorFor(id);
            if (icons.emplace(color.red, color.green, color.blue, &glyphFor(name[0])).second) {
                apps.push_back({id, name, false});
                break;
            }
        }
    }
    return apps;
}

}  // namespace velto::device
