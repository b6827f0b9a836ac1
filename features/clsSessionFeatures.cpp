#include "features/clsSessionFeatures.h"

#include "app/services/modSystem.h"
#include "features/modAwayIdleProf.h"
#include "features/modLogging.h"
#include "features/modSNReplace.h"

std::shared_ptr<const ReplacementList> clsSessionFeatures::LoadReplacements() {
    return modSNReplace::LoadReplacements();
}

bool clsSessionFeatures::ReplaceScreenNames(const ReplacementList& list, Direction direction,
                                            std::string_view payload, ByteString& rewritten) {
    return modSNReplace::ReplaceScreenNames(list, direction, payload, rewritten);
}

void clsSessionFeatures::LogMessage(Direction direction, const clsHeaderSNAC& snac,
                                    const std::string& ownScreenName) {
    modLogging::LogMessage(direction, snac, ownScreenName);
}

bool clsSessionFeatures::WantsProfileHtml() {
    return modAwayIdleProf::WantsProfileHtml();
}

void clsSessionFeatures::SeeProfileHtml(clsHeaderFLAP& flap) {
    modAwayIdleProf::SeeProfileHtml(flap);
}

std::optional<clsHeaderFLAP> clsSessionFeatures::MakeAwayFlap(const std::string& strAway) {
    return modAwayIdleProf::MakeAwayFlap(strAway);
}

std::optional<clsHeaderFLAP> clsSessionFeatures::MakeIdleFlap(std::int32_t mins) {
    return modAwayIdleProf::MakeIdleFlap(mins);
}

std::optional<clsHeaderFLAP> clsSessionFeatures::MakeProfileFlap(const std::string& strProfile) {
    return modAwayIdleProf::MakeProfileFlap(strProfile);
}

void clsSessionFeatures::DeleteUserinfoBag(const std::string& screenName) {
    modSystem::DeleteUserinfoBag(screenName);
}
