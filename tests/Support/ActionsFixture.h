// What the tests of the main window's actions share: rips in every stage, and finding sheets.
#pragma once

#include <gtest/gtest.h>

#include <QDialog>

#include "StubTools.h"
#include "WindowSupport.h"

class ActionsFixture : public testing::Test {
protected:
    // The sheet of this class, once it is open; null while there is none.
    template <typename T>
    static T* sheet(const HostWindow& window) {
        for (T* dialog : window.findChildren<T*>()) {
            if (dialog->isVisible()) {
                return dialog;
            }
        }
        return nullptr;
    }

    static QDialog* sheetNamed(const HostWindow& window, const char* className) {
        for (QDialog* dialog : window.findChildren<QDialog*>()) {
            if (dialog->isVisible() && dialog->inherits(className)) {
                return dialog;
            }
        }
        return nullptr;
    }

    void startHeldRip(HostWindow& window) {
        DriveStubs::disc(folder, {});
        DriveStubs::heldImaging(folder, "PERCENT:42\n", 1000);
        window.open();
        path = window.choose(folder, QStringLiteral("a.iso"));
        window.click("startButton");
        ASSERT_TRUE(waitUntil([&] { return window.content->ripper().progress() == 0.42; }));
        settle();
    }

    void startHeldVerification(HostWindow& window) {
        Preferences().set(Preference::ThoroughVerify, true);
        DriveStubs::disc(folder, {});
        DriveStubs::imaging(folder,
                            "printf image > \"$out\"\n"
                            "[ $verify = yes ] && exec sleep 1000\n"
                            "exit 0");
        window.open();
        path = window.choose(folder, QStringLiteral("a.iso"));
        window.click("startButton");
        ASSERT_TRUE(
            waitUntil([&] { return window.content->ripper().trackedVerifyProcesses() == 1; }));
        settle();
    }

    void finishRip(HostWindow& window) {
        window.open();
        path = window.choose(folder, QStringLiteral("a.iso"));
        window.click("startButton");
        ASSERT_TRUE(waitUntil(
            [&] { return !window.content->isWorking() && window.content->ripper().finished(); }));
        settle();
    }

    bool ejected() const {
        return StubTools::log(folder).contains(QStringLiteral("diskutil eject /dev/disk4"));
    }

    // The folder comes first and goes last: the models read it when they are made.
    TestFolder folder;
    QString path;
};
