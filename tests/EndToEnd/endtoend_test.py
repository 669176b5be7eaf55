"""The real program in a real window, used through its accessible names.

endtoend_test.py PROGRAM [TEST]...   (run by ctest; PROGRAM is the built spindrift)
"""

import json
import os
import re
import shutil
import sys
import tempfile
import time
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from desktop import Desktop, Program, main_guard, wait_for  # noqa: E402

desktop = Desktop()
program_path = ""


class WindowTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="test-", dir=desktop.folder)
        self.drive = os.path.join(self.folder, "drive")
        os.mkdir(self.drive)
        self.programs = []

    def tearDown(self):
        for program in self.programs:
            program.stop()
            text = program.standard_error()
            if text:
                print(f"  standard error of the program: {text.strip()}")
        shutil.rmtree(self.folder, ignore_errors=True)

    # Setting the scene

    def insert_disc(self, megabytes=3):
        temporary = os.path.join(self.drive, "new.iso")
        with open(temporary, "wb") as file:
            file.write(os.urandom(megabytes << 20))
        os.rename(temporary, os.path.join(self.drive, "disc.iso"))

    def set_drive(self, **keys):
        path = os.path.join(self.drive, "drive.json")
        with open(path + ".new", "w") as file:
            json.dump({"vendor": "ACME", "product": "Test Drive", "revision": "1.0", **keys}, file)
        os.rename(path + ".new", path)

    def preference(self, **keys):
        folder = os.path.join(self.folder, "config", "Spindrift")
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, "Spindrift.conf"), "a") as file:
            file.write("[General]\n" + "".join(f"{key}={value}\n" for key, value in keys.items()))

    def start(self, *arguments):
        program = Program(program_path, self.folder, self.drive, arguments=arguments)
        self.programs.append(program)
        wait_for(program.application, "the program's accessible tree")
        return program

    def choose(self, program, name):
        path = os.path.join(self.folder, name)
        program.press("Choose…")
        field = program.find(role="text", within=program.find(role="dialog"))
        program.type_into(field, path)
        program.press("Save")
        wait_for(lambda: program.shows(path), f"the destination {path}")
        return path

    def status(self, program, text):
        return wait_for(lambda: program.shows(text), f"the status {text!r}; there is: {program.names()}")

    def notification(self, title):
        return wait_for(lambda: next((body for found, body in desktop.notifications() if found == title), None),
                        f"a notification titled {title!r}; there are {desktop.notifications()}")

    def temporary_images(self):
        return os.listdir(os.path.join(self.folder, "tmp"))

    # The tests

    def test_a_disc_is_chosen_imaged_verified_ejected_and_can_be_imaged_again(self):
        self.set_drive()
        self.insert_disc()
        with open(os.path.join(self.drive, "disc.iso"), "rb") as file:
            disc = file.read()
        program = self.start()
        program.find("Start Rip", "push button")
        self.assertFalse(program.is_enabled(program.find("Start Rip", "push button")))
        path = self.choose(program, "My Disc.iso")
        program.press("Start Rip")
        self.status(program, "Verified")
        self.assertEqual(self.notification("Rip Verified"), "Saved and verified: My Disc.iso")
        with open(path, "rb") as file:
            self.assertEqual(file.read(), disc)
        wait_for(lambda: os.path.exists(os.path.join(self.drive, "ejected.iso")), "the ejected disc")
        wait_for(lambda: program.shows("No destination chosen"), "the destination to be cleared")
        again = program.find("Rip Again", "push button")
        self.assertFalse(program.is_enabled(again))
        self.assertEqual(self.temporary_images(), [])

        wait_for(lambda: program.shows("No disc inserted."), "the empty tray")
        self.insert_disc()
        wait_for(lambda: program.shows("Eject Disc"), "the next disc")
        second = self.choose(program, "second.iso")
        program.press("Rip Again")
        wait_for(lambda: os.path.exists(second), "the second image")
        with open(os.path.join(self.folder, "data", "Spindrift", "speedlog.json")) as file:
            self.assertEqual(json.load(file)[0]["source"], "Rip")

    def test_a_rip_goes_on_with_keep_going_and_ends_with_cancel_rip(self):
        self.set_drive(bytesPerSecond=400_000)
        self.insert_disc(8)
        program = self.start()
        path = self.choose(program, "cancelled.iso")
        before = len(desktop.notifications())
        program.press("Start Rip")
        program.press("Cancel")
        program.find("Cancel the rip? The partial ISO file will be deleted.")
        program.press("Keep Going")
        wait_for(lambda: not program.shows("Keep Going"), "the question to close")
        self.assertTrue(program.shows("Cancel", "push button"))
        wait_for(self.temporary_images, "the growing image")
        program.press("Cancel")
        program.press("Cancel Rip")
        program.find("Start Rip", "push button")
        wait_for(lambda: not self.temporary_images(), "the temporary image to go")
        self.assertFalse(os.path.exists(path))
        self.assertEqual(len(desktop.notifications()), before)

    def test_a_thorough_verification_matches(self):
        self.set_drive()
        self.insert_disc()
        self.preference(thoroughVerify="true", ejectWhenDone="false")
        program = self.start()
        path = self.choose(program, "thorough.iso")
        program.press("Start Rip")
        self.status(program, "Verified")
        self.assertTrue(os.path.exists(path))
        self.assertTrue(os.path.exists(os.path.join(self.drive, "disc.iso")))
        wait_for(lambda: not self.temporary_images(), "the second image to go")

    def test_a_cancelled_verification_keeps_the_image(self):
        self.set_drive(bytesPerSecond=1_500_000)
        self.insert_disc(4)
        self.preference(thoroughVerify="true")
        program = self.start()
        path = self.choose(program, "kept.iso")
        program.press("Start Rip")
        self.status(program, "Verifying…")
        program.press("Cancel")
        program.find("Cancel verification? The ISO file is already complete and will be kept — it just "
                     "won't be confirmed as verified.")
        program.press("Cancel Verification")
        self.status(program, "Done")
        self.assertTrue(os.path.exists(path))
        self.assertTrue(os.path.exists(os.path.join(self.drive, "disc.iso")))
        wait_for(lambda: not self.temporary_images(), "the second image to go")

    def test_a_disc_that_reads_differently_the_second_time_is_a_mismatch_and_stays_in(self):
        self.set_drive(faults=[{"lba": 100, "count": 1, "kind": "changed"}])
        self.insert_disc()
        self.preference(thoroughVerify="true")
        program = self.start()
        path = self.choose(program, "mismatch.iso")
        program.press("Start Rip")
        self.status(program, "Verification mismatch")
        self.assertEqual(self.notification("Verification Failed"),
                         "The ISO does not match the disc. The disc was not ejected — you may want to retry.")
        self.assertTrue(program.shows(path))
        self.assertTrue(os.path.exists(os.path.join(self.drive, "disc.iso")))

    def test_a_missing_permission_fails_the_rip_and_opens_the_guide(self):
        self.set_drive()
        self.insert_disc()
        self.preference(hasCompletedOnboarding="true")
        program = self.start()
        self.choose(program, "denied.iso")
        self.set_drive(denyAccess=True)
        program.press("Start Rip")
        program.find("Welcome to Spindrift", "label")
        self.assertIn("Permission denied reading the disc.", self.notification("Rip Failed"))

    def test_the_guide_follows_the_permission_both_ways_and_skip_is_remembered(self):
        self.set_drive(denyAccess=True)
        self.insert_disc()
        program = self.start()
        program.find("Full Disk Access not enabled yet")
        self.set_drive()
        began = time.monotonic()
        program.find("Full Disk Access is enabled")
        program.find("Get Started", "push button")
        print(f"  the pill turned green after {time.monotonic() - began:.2f} s")
        self.set_drive(denyAccess=True)
        program.find("Full Disk Access not enabled yet")
        program.find("Open Full Disk Access…", "push button")
        program.press("Skip for now")
        wait_for(lambda: not program.shows("Skip for now"), "the guide to close")
        program.stop()
        again = self.start()
        again.find("Choose…", "push button")
        self.assertFalse(again.shows("Skip for now"))

    def test_a_speed_test_goes_to_the_top_of_the_history(self):
        self.set_drive()
        self.insert_disc()
        program = self.start()
        program.find("Eject Disc")
        program.press("Drive Diagnostics")
        program.find("No speed tests recorded yet.")
        program.press("Run Speed Test")
        program.find("Speed Test", "label")
        wait_for(lambda: not self.temporary_images(), "the temporary image to go")
        program.press("Done")
        wait_for(lambda: not program.shows("Run Speed Test"), "the sheet to close")

    def test_a_nickname_renames_the_old_rows(self):
        self.set_drive()
        self.insert_disc()
        program = self.start()
        program.find("Eject Disc")
        program.press("Drive Diagnostics")
        program.press("Run Speed Test")
        program.find("Speed Test", "label")
        self.assertGreaterEqual(len(program.all("ACME Test Drive 1.0", "label")), 2)
        program.type_into(program.find("Nickname of the drive", "text"), "Office burner")
        program.press("Save")
        program.find("Office burner", "label")
        with open(os.path.join(self.folder, "data", "Spindrift", "drivenicknames.json")) as file:
            self.assertEqual(json.load(file), {"ACME|Test Drive|1.0": "Office burner"})

    def retro_in_file(self):
        try:
            with open(os.path.join(self.folder, "config", "Spindrift", "Spindrift.conf")) as file:
                return re.search(r"^retroMode=true$", file.read(), re.M) is not None
        except FileNotFoundError:
            return False

    def test_retro_mode_by_menu_shortcut_and_settings_stays_in_step(self):
        self.set_drive()
        program = self.start()
        program.find("Choose…", "push button")
        wait_for(program.window_ids, "the window")
        program.key("ctrl+comma")
        settings_box = program.find("Retro Mode", "check box")
        self.assertFalse(program.is_checked(settings_box))
        program.key("ctrl+shift+r")
        wait_for(lambda: program.is_checked(settings_box), "the settings window to follow the shortcut")
        wait_for(self.retro_in_file, "the preference in the file")
        self.assertTrue(self.menu_is_checked(program))
        program.act(settings_box)
        wait_for(lambda: not self.retro_in_file(), "the settings window to turn it off")
        self.assertFalse(self.menu_is_checked(program))
        program.press("View", "menu item")
        program.press("Retro Mode", "menu item")
        wait_for(lambda: program.is_checked(settings_box), "the settings window to follow the menu")

    def menu_is_checked(self, program):
        program.press("View", "menu item")
        checked = program.is_checked(program.find("Retro Mode", "menu item"))
        program.key("Escape")
        wait_for(lambda: not program.shows("Retro Mode", "menu item"), "the menu to close")
        return checked

    def test_two_windows_have_their_own_models(self):
        self.set_drive()
        self.insert_disc()
        program = self.start()
        program.find("Eject Disc")
        wait_for(program.window_ids, "the first window")
        program.key("ctrl+n")
        wait_for(lambda: len(program.all("Choose…", "push button")) == 2, "the second window")
        wait_for(lambda: len(program.all("Eject Disc")) == 2, "the disc in both")
        path = os.path.join(self.folder, "only one.iso")
        program.act(program.find("Choose…", "push button"))
        program.type_into(program.find(role="text", within=program.find(role="dialog")), path)
        program.press("Save")
        wait_for(lambda: program.shows(path), "the destination")
        self.assertEqual(len(program.all(path)), 1)
        self.assertTrue(program.shows("No destination chosen"))

    def test_a_screen_reader_hears_every_status(self):
        self.set_drive()
        self.insert_disc()
        self.preference(thoroughVerify="true", ejectWhenDone="false")
        program = self.start()
        self.choose(program, "heard.iso")
        heard = program.listen()
        program.press("Start Rip")
        wait_for(lambda: "Verified" in heard(), f"the verdict to be told; told was {heard()}")
        self.assertEqual(heard(), ["Verifying…", "Verified"])

    def test_the_keyboard_alone_is_enough(self):
        self.set_drive()
        self.insert_disc()
        self.preference(ejectWhenDone="false")
        program = self.start()
        program.find("Eject Disc")
        wait_for(program.window_ids, "the window")
        program.key("Tab")
        visited = [wait_for(program.focused, "a focus")]
        while len(visited) < 3:
            program.key_to_focus("Tab")
            visited.append(wait_for(lambda: (name := program.focused()) != visited[-1] and name,
                                    f"the focus to leave {visited[-1]}"))
        order = ["Drive Diagnostics", "Eject Disc", "Choose…"]
        begin = order.index(visited[0])
        self.assertEqual(visited, order[begin:] + order[:begin])
        while program.focused() != "Choose…":
            program.key_to_focus("Tab")
        program.key_to_focus("space")
        program.find(role="text", within=program.find(role="dialog"))
        path = os.path.join(self.folder, "typed.iso")
        wait_for(lambda: program.focused() and program.focused() not in order, "the dialog's focus")
        program.key_to_focus("ctrl+a")
        program.write_to_focus(path)
        program.key_to_focus("Return")
        wait_for(lambda: program.shows(path), f"the destination; there is: {program.names()}")
        wait_for(lambda: not program.shows("Save", "push button"), "the dialog to close")
        program.key("Return")
        self.status(program, "Verified")
        self.assertTrue(os.path.exists(path))

        program.key("F10")
        program.find("New Window", "menu item")
        program.key_to_focus("Escape")
        wait_for(lambda: not program.shows("New Window", "menu item"), "the menu to close")
        program.key_to_focus("ctrl+q")
        self.assertEqual(wait_for(lambda: program.ended() is not None and (program.ended(),), "the end")[0], 0)

    def test_closing_and_quitting_during_a_rip_ask_first(self):
        self.set_drive(bytesPerSecond=400_000)
        self.insert_disc(8)
        program = self.start()
        path = self.choose(program, "asked.iso")
        program.press("Start Rip")
        wait_for(self.temporary_images, "the growing image")
        for keys in ("ctrl+w", "ctrl+q"):
            program.key(keys)
            program.find("Cancel the rip? The partial ISO file will be deleted.")
            program.key_to_focus("Escape")
            wait_for(lambda: not program.shows("Keep Going"), "the question to close")
            self.assertTrue(program.shows("Cancel", "push button"))
            self.assertTrue(self.temporary_images())
        program.key("ctrl+q")
        program.press("Cancel Rip")
        self.assertEqual(wait_for(lambda: program.ended() is not None and (program.ended(),), "the end")[0], 0)
        wait_for(lambda: not self.temporary_images(), "the temporary image to go")
        self.assertFalse(os.path.exists(path))

    def test_every_control_of_the_main_window_has_a_name(self):
        self.set_drive()
        self.insert_disc()
        program = self.start()
        program.find("Eject Disc")
        for node in program.walk():
            if any(program.is_a(role, node) for role in ("push button", "check box", "text")) \
                    and program.is_showing(node):
                self.assertTrue(node.get_name(), f"a {node.get_role_name()} has no name")

    def test_the_disc_is_ejected_by_its_button(self):
        self.set_drive()
        self.insert_disc()
        program = self.start()
        program.press("Eject Disc")
        program.find("No disc inserted.")
        self.assertTrue(os.path.exists(os.path.join(self.drive, "ejected.iso")))

    def test_a_failing_eject_is_told(self):
        self.set_drive(failEject=True)
        self.insert_disc()
        program = self.start()
        program.press("Eject Disc")
        self.assertEqual(
            self.notification("Couldn't Eject Disc"),
            "The rip finished, but the disc couldn't be ejected automatically. You can eject it manually.")


if __name__ == "__main__":
    program_path = os.path.abspath(sys.argv.pop(1))
    main_guard(desktop)
    try:
        suite = unittest.defaultTestLoader
        names = sys.argv[1:]
        tests = suite.loadTestsFromNames([f"WindowTest.{n}" for n in names], sys.modules["__main__"]) \
            if names else suite.loadTestsFromTestCase(WindowTest)
        result = unittest.TextTestRunner(verbosity=2, stream=sys.stdout).run(tests)
    finally:
        desktop.stop()
    sys.exit(0 if result.wasSuccessful() and result.testsRun > 0 else 1)
