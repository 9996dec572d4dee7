// Must not build: the value model sits below the user interface.
#include "platform/ui/image.h"
