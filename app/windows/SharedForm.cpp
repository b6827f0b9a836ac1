#include "app/windows/SharedForm.h"

#include <vector>

namespace {

std::vector<void (*)()>& UnloadersInOrder() {
    static std::vector<void (*)()> unloaders;
    return unloaders;
}

}  // namespace

void RememberForm(void (*unload)()) {
    UnloadersInOrder().push_back(unload);
}

void UnloadForms() {
    auto& unloaders = UnloadersInOrder();
    while (!unloaders.empty()) {
        const auto unload = unloaders.back();
        unloaders.pop_back();
        unload();
    }
}
