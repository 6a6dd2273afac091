#include "frame/controls.h"
#include "frame/errors.h"

#include <string>

namespace vn {

namespace {
constexpr UINT kVersionLabelId = 8007;  // "Version: "
constexpr UINT kVersionTextId = 9000;   // "1.1"
constexpr UINT kAboutTitleId = 9001;    // "About Vornal Analysis Library"
}  // namespace

void ShowAboutBox(Call&) {
    const std::string title = LoadFrameString(kAboutTitleId);
    const std::string text = "VNAnalysisControlsLib\n" + LoadFrameString(kVersionLabelId) + LoadFrameString(kVersionTextId);
    MessageBoxA(GetActiveWindow(), text.c_str(), title.c_str(), MB_OK | MB_ICONINFORMATION);
}

}  // namespace vn
