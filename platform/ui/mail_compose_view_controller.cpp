#include "platform/ui/mail_compose_view_controller.h"

namespace plat {

bool MailComposeViewController::cancel() {
    auto delegate = delegate_.lock();
    if (!delegate) return false;
    delegate->mailComposeControllerDidFinishWithResult(*this, MFMailComposeResultCancelled);
    return true;
}

}  // namespace plat
