// clsSessionFeatures: what the relay asks of the session features, answered by their modules. Start-up makes
// one and puts it in force (SetSessionHooks).
#pragma once

#include "core/SessionHooks.h"

class clsSessionFeatures : public SessionHooks {
 public:
    std::shared_ptr<const ReplacementList> LoadReplacements() override;
    bool ReplaceScreenNames(const ReplacementList& list, Direction direction, std::string_view payload,
                            ByteString& rewritten) override;
    void LogMessage(Direction direction, const clsHeaderSNAC& snac,
                    const std::string& ownScreenName) override;
    bool WantsProfileHtml() override;
    void SeeProfileHtml(clsHeaderFLAP& flap) override;
    std::optional<clsHeaderFLAP> MakeAwayFlap(const std::string& strAway) override;
    std::optional<clsHeaderFLAP> MakeIdleFlap(std::int32_t mins) override;
    std::optional<clsHeaderFLAP> MakeProfileFlap(const std::string& strProfile) override;
    void DeleteUserinfoBag(const std::string& screenName) override;
};
