#include "app/services/Settings.h"

#include "app/services/modRegistry.h"

namespace settings {

bool IsOn(Name<true> mark) {
    return MeansOn(mark.Row(), modRegistry::ReadSetting(mark.Row().name));
}

std::string Text(Name<false> setting) {
    return modRegistry::ReadSetting(setting.Row().name);
}

bool MeansOn(const Setting& mark, std::string_view stored) {
    return mark.kind == Kind::OnUnlessZero ? stored != "0" : stored == StoredMark(mark, true);
}

const char* StoredMark(const Setting& mark, bool on) {
    if (mark.kind == Kind::Choice) return on ? "True" : "False";
    return on ? "1" : "0";
}

void StoreMissing() {
    for (const auto& setting : kTable) {
        if (modRegistry::ReadSetting(setting.name).empty())
            modRegistry::WriteSetting(setting.name, setting.initial);
    }
}

std::string FaultOf(const Setting& setting, std::string_view value) {
    const std::string name = setting.name;
    if (value.size() > kMaxTextBytes)
        return name + " has " + std::to_string(kMaxTextBytes) + " bytes at most";
    if (setting.kind == Kind::Number && !ParseNumber<std::int32_t>(value)) return name + " is a whole number";
    if (IsMark(setting.kind) && value != StoredMark(setting, true) && value != StoredMark(setting, false))
        return name + " is " + StoredMark(setting, true) + " or " + StoredMark(setting, false);
    return {};
}

}  // namespace settings
