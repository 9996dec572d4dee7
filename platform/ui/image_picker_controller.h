#pragma once

#include <memory>

#include "platform/foundation/value.h"
#include "platform/ui/image.h"
#include "platform/ui/view_controller.h"

namespace plat {

// UIImagePickerControllerSourceType.
enum ImagePickerSourceType : int {
    UIImagePickerControllerSourceTypePhotoLibrary = 0,
    UIImagePickerControllerSourceTypeCamera = 1,
    UIImagePickerControllerSourceTypeSavedPhotosAlbum = 2,
};

// Keys of the information dictionary handed to the delegate.
inline constexpr const char* UIImagePickerControllerMediaType = "UIImagePickerControllerMediaType";
inline constexpr const char* UIImagePickerControllerOriginalImage =
    "UIImagePickerControllerOriginalImage";
inline constexpr const char* UIImagePickerControllerEditedImage =
    "UIImagePickerControllerEditedImage";

class ImagePickerController;

// UIImagePickerControllerDelegate.
class ImagePickerDelegate {
  public:
    virtual ~ImagePickerDelegate() = default;
    virtual void imagePickerControllerDidFinishPickingMediaWithInfo(ImagePickerController& picker,
                                                                    Value info) = 0;
    virtual void imagePickerControllerDidCancel(ImagePickerController& picker) = 0;
};

// UIImagePickerController: the photo picker. The delegate is held weakly, as UIKit does.
// pick() and cancel() are the user's side, for hosts that act as the user.
class ImagePickerController : public ViewController {
  public:
    bool allowsEditing() const { return allowsEditing_; }
    void setAllowsEditing(bool allows) { allowsEditing_ = allows; }
    int sourceType() const { return sourceType_; }
    void setSourceType(int type) { sourceType_ = type; }
    std::shared_ptr<ImagePickerDelegate> delegate() const { return delegate_.lock(); }
    void setDelegate(const std::shared_ptr<ImagePickerDelegate>& delegate) { delegate_ = delegate; }

    // The user chose a picture: the delegate gets {media type "public.image", the original,
    // and the edited picture unless it is null}. False when there is no delegate.
    bool pick(const ImagePtr& edited, const ImagePtr& original);
    // The user cancelled: the delegate's didCancel. False when there is no delegate.
    bool cancel();

    std::string className() const override { return "UIImagePickerController"; }
    std::vector<std::string> classChain() const override {
        return {"UIImagePickerController", "UINavigationController", "UIViewController",
                "UIResponder", "NSObject"};
    }

  private:
    bool allowsEditing_ = false;
    int sourceType_ = UIImagePickerControllerSourceTypePhotoLibrary;
    std::weak_ptr<ImagePickerDelegate> delegate_;
};

using ImagePickerControllerPtr = std::shared_ptr<ImagePickerController>;

}  // namespace plat
