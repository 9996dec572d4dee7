#pragma once

namespace plat {

// One pixel budget for every picture decoder: a forged header alone could otherwise make us
// allocate and decode gigabytes (libjpeg even fills in missing data rather than failing). No
// picture a phone takes comes near it. cairo refuses surfaces wider or higher than the side
// limit, and checking first keeps a hostile header from asking for gigabytes.
inline constexpr long long kMaxPicturePixels = 1LL << 26;
inline constexpr int kMaxPictureSide = 32767;

}  // namespace plat
