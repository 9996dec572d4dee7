#include "platform/ui/image_picker_controller.h"

namespace plat {

bool ImagePickerController::pick(const ImagePtr& edited, const ImagePtr& original) {
    auto delegate = delegate_.lock();
    if (!delegate) return false;
    // The delegate usually dismisses us and drops its slot for us; stay alive until it returns.
    const auto self = weak_from_this().lock();
    Value info = Value::dictionary({
        {UIImagePickerControllerMediaType, Value("public.image")},
        {UIImagePickerControllerOriginalImage, Value(original)},
        {UIImagePickerControllerEditedImage, Value(edited)},  // nil entries are left out
    });
    delegate->imagePickerControllerDidFinishPickingMediaWithInfo(*this, info);
    return true;
}

bool ImagePickerController::cancel() {
    auto delegate = delegate_.lock();
    if (!delegate) return false;
    const auto self = weak_from_this().lock();
    delegate->imagePickerControllerDidCancel(*this);
    return true;
}

}  // namespace plat
