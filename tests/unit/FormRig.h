// FormRig: what a test of the dialogs needs around it: sessions, settings, files and boxes in memory.
#pragma once

#include "features/TextLimits.h"
#include "features/modAwayIdleProf.h"
#include "os/RegistryStore.h"
#include "os/fake/FakeDialog.h"
#include "os/fake/FakeFiles.h"
#include "tests/unit/FreshWorld.h"
#include "tests/unit/Rig.h"

class FormRig : public FreshWorld {
 protected:
    using User = os::fake::DialogUser;

    FormRig() { TextLimits::Reset(); }
    ~FormRig() override { UnloadForms(); }

    static bool IsShown(const std::string& caption) { return os::fake::ShownDialogCount(caption) > 0; }

    // Frames that the dialogs have sent to a server.
    static ByteString Away(std::int32_t sequence, const std::string& text) {
        return Frame(2, sequence, modAwayIdleProf::MakeAwayFlap(text).Data());
    }
    static ByteString Idle(std::int32_t sequence, std::int32_t minutes) {
        return Frame(2, sequence, modAwayIdleProf::MakeIdleFlap(minutes).Data());
    }
    static ByteString Profile(std::int32_t sequence, const std::string& text) {
        return Frame(2, sequence, modAwayIdleProf::MakeProfileFlap(text).Data());
    }

    // Whether the one box since the last call is the one that also explains how to connect.
    static bool ToldNotSignedOn() {
        return TakeBoxes() ==
               Texts{
                   "You must be signed on to at least one screenname to use this feature.\r\n\r\n"
                   "If you ARE signed on to AIM, the connection settings to AIM are not set up correctly. "
                   "Make sure they are as follows:\r\n\r\n"
                   "Protocol: SOCKS4\r\nProxy Host: 127.0.0.1\r\nProxy Port: 11080"};
    }

    Rig rig;
};
