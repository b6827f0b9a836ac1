// FreshWorld: what a test begins with: nothing from the tests before in the fakes, and no form left over.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/windows/SharedForm.h"
#include "os/fake/FakeMessageBox.h"
#include "os/fake/FakeWorld.h"

using Texts = std::vector<std::string>;

struct FreshWorld : testing::Test {
    FreshWorld() { os::fake::ResetWorld(); }
    ~FreshWorld() override { UnloadForms(); }

    // The boxes since the last call, each as its text.
    static Texts TakeBoxes() {
        Texts texts;
        for (const auto& box : os::fake::boxes.shown) texts.push_back(box.text);
        os::fake::boxes = {};
        return texts;
    }
};
