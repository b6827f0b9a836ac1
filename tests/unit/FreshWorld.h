// FreshWorld: what a test begins with: nothing from the tests before in the fakes, and no form left over.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/windows/SharedForm.h"
#include "os/desktop/Dialog.h"
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

    // The rows of a list as they are read: their first cells, with "|" between them.
    static Texts Rows(const os::Dialog& dialog, os::ControlId list, int columns) {
        Texts rows;
        for (int row = 0; row < dialog.RowCount(list); ++row) {
            rows.push_back(dialog.Cell(list, row, 0));
            for (int column = 1; column < columns; ++column)
                rows.back() += "|" + dialog.Cell(list, row, column);
        }
        return rows;
    }
};
