#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/foundation/value.h"
#include "platform/ui/view_controller.h"

namespace plat {

// MFMailComposeResult.
enum MailComposeResult : int {
    MFMailComposeResultCancelled = 0,
    MFMailComposeResultSaved = 1,
    MFMailComposeResultSent = 2,
    MFMailComposeResultFailed = 3,
};

class MailComposeViewController;

// MFMailComposeViewControllerDelegate. The composer never goes away by itself: the delegate
// is told how the user finished and dismisses it.
class MailComposeDelegate {
  public:
    virtual ~MailComposeDelegate() = default;
    virtual void mailComposeControllerDidFinishWithResult(MailComposeViewController& controller,
                                                          int result) = 0;
};

// MFMailComposeViewController: a mail the user finishes and sends. The delegate is held
// weakly, as MessageUI does. cancel() is the user's side, for hosts that act as the user.
class MailComposeViewController : public ViewController {
  public:
    struct Attachment {
        Bytes data;
        std::string mimeType;
        std::string fileName;
    };

    // +canSendMail: a device without a mail account cannot; the model always has one.
    static bool canSendMail() { return true; }

    const std::vector<std::string>& toRecipients() const { return to_; }
    void setToRecipients(std::vector<std::string> recipients) { to_ = std::move(recipients); }
    const std::string& subject() const { return subject_; }
    void setSubject(std::string subject) { subject_ = std::move(subject); }
    const std::string& messageBody() const { return body_; }
    bool isHTML() const { return html_; }
    void setMessageBody(std::string body, bool isHTML) {
        body_ = std::move(body);
        html_ = isHTML;
    }
    // addAttachmentData:mimeType:fileName:
    void addAttachmentData(Bytes data, std::string mimeType, std::string fileName) {
        attachments_.push_back({std::move(data), std::move(mimeType), std::move(fileName)});
    }
    const std::vector<Attachment>& attachments() const { return attachments_; }

    std::shared_ptr<MailComposeDelegate> mailComposeDelegate() const { return delegate_.lock(); }
    void setMailComposeDelegate(const std::shared_ptr<MailComposeDelegate>& delegate) {
        delegate_ = delegate;
    }

    // The composer's bar shows the subject, or "New Message" while there is none.
    std::optional<std::string> title() const override {
        return subject_.empty() ? std::string("New Message") : subject_;
    }

    // The user taps Cancel and deletes the draft: the delegate hears "cancelled". False when
    // there is no delegate (the composer then stays, as it would on a device).
    bool cancel();

    std::string className() const override { return "MFMailComposeViewController"; }
    std::vector<std::string> classChain() const override {
        return {"MFMailComposeViewController", "UINavigationController", "UIViewController",
                "UIResponder", "NSObject"};
    }

  private:
    std::vector<std::string> to_;
    std::string subject_;
    std::string body_;
    bool html_ = false;
    std::vector<Attachment> attachments_;
    std::weak_ptr<MailComposeDelegate> delegate_;
};

using MailComposeViewControllerPtr = std::shared_ptr<MailComposeViewController>;

}  // namespace plat
