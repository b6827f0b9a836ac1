// FormRig: what a test of the dialogs needs around it: sessions, settings, files and boxes in memory, and no
// form left over from the test before.
#pragma once

#include "app/services/SharedForm.h"
#include "features/clsSessionFeatures.h"
#include "features/modAwayIdleProf.h"
#include "os/RegistryStore.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeFiles.h"
#include "os/fake/FakeMessageBox.h"
#include "os/fake/FakeRegistryStore.h"
#include "tests/unit/Rig.h"

class FormRig : public testing::Test {
 protected:
    using User = os::fake::DialogUser;

    FormRig() {
        os::fake::ResetRegistry();
        os::fake::ResetMessageBoxes();
        SetSessionHooks(&features_);
    }
    ~FormRig() override { UnloadForms(); }

    static bool IsShown(const std::string& caption) { return os::fake::ShownDialogCount(caption) > 0; }

    // The boxes since the last call, each as its text.
    static std::vector<std::string> TakeBoxes() {
        std::vector<std::string> texts;
        for (const auto& box : os::fake::ShownBoxes()) texts.push_back(box.text);
        os::fake::ResetMessageBoxes();
        return texts;
    }

    // What the server has been sent since the last call: "" or the one frame, which must have this number.
    static ByteString Away(std::int32_t sequence, const std::string& text) {
        return Frame(2, sequence, modAwayIdleProf::MakeAwayFlap(text).Data());
    }
    static ByteString Idle(std::int32_t sequence, std::int32_t minutes) {
        return Frame(2, sequence, modAwayIdleProf::MakeIdleFlap(minutes).Data());
    }
    static ByteString Profile(std::int32_t sequence, const std::string& text) {
        return Frame(2, sequence, modAwayIdleProf::MakeProfileFlap(text).Data());
    }

    static inline const std::string kNotSignedOn =
        "You must be signed on to at least one screenname to use this feature.";
    static bool ToldNotSignedOn() {
        const auto boxes = TakeBoxes();
        return boxes.size() == 1 && boxes.front().starts_with(kNotSignedOn);
    }

    Rig rig;

 private:
    clsSessionFeatures features_;
};
