#include "features/UserinfoBag.h"

#include "app/services/modSystem.h"

namespace {

class BagRemover final : public SessionFeature {
 public:
    explicit BagRemover(Session& session) : session_(session) {}

    Verdict Frame(FrameView& frame) override {
        modSystem::DeleteUserinfoBag(session_.Names(frame.Way()).original);
        return Verdict::Pass;
    }
    void Ended(const SessionEnd&) override {
        modSystem::DeleteUserinfoBag(session_.Names(Direction::ToClient).original);
    }

 private:
    Session& session_;
};

}  // namespace

FeatureEntry UserinfoBag() {
    return FeatureOf<BagRemover>({{0x0017, 0x0002}}, Made::AtOnce);
}
