#include "app/windows/modError.h"

#include <memory>
#include <vector>

#include "app/windows/frmError.h"
#include "os/desktop/MessageBox.h"

namespace modError {
namespace {

class Windows {
 public:
    void Open(const std::string& description, std::int32_t number, const std::string& where,
              std::int16_t line) {
        if (forms_.size() >= kMaxWindows) return;
        auto form = std::make_unique<frmError>();
        form->Closed.Bind<&Windows::frmError_Closed>(*this);
        auto& opened = *forms_.emplace_back(std::move(form));
        // Each a little below the last, so that none hides another; from the middle again when all are
        // closed.
        steps_ = forms_.size() == 1 ? 0 : (steps_ + 1) % kMaxSteps;
        opened.Start(description, std::to_string(number), where, line,
                     {.step = steps_, .takesFocus = os::BoxesBefore::Current() != 0});
    }
    std::size_t Count() const { return forms_.size(); }
    void Discard() { forms_.clear(); }

 private:
    void frmError_Closed(frmError& closed) {
        std::erase_if(forms_, [&](const auto& form) { return form.get() == &closed; });
    }

    static constexpr int kMaxSteps = 8;

    std::vector<std::unique_ptr<frmError>> forms_;
    int steps_ = 0;
};

Windows& TheWindows() {
    static Windows windows;
    return windows;
}

}  // namespace

void ReportError(const std::string& description, std::int32_t number, const std::string& where,
                 std::int16_t line) {
    TheWindows().Open(description, number, where, line);
}

std::size_t OpenWindowCount() {
    return TheWindows().Count();
}

void DiscardWindows() {
    TheWindows().Discard();
}

}  // namespace modError
