#pragma once

#include "app/render/page_view.h"
#include "app/session/session.h"

namespace velto::app {

// Gives the rows of the top page's view the frames the screenshot draws them at, from the
// same layout, so that a record's frames and a tap at a point agree with the picture.
void placeRowFrames(Session& session, PageView& view);

}  // namespace velto::app
