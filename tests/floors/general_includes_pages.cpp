// Must not build: a page folder sees the shared helpers, never another page folder.
#include "pages/mail_app_settings_controller.h"
