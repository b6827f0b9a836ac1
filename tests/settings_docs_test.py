#!/usr/bin/env python3
"""The settings as the documents list them are those of the table in app/services/Settings.h."""
import re
import unittest
from pathlib import Path

ROOT = Path(__file__).parent.parent
FORMS = {"Switch": "1 or 0", "OnUnlessZero": "1 or 0", "Choice": "True or False"}


def table():
    """Name, kind and default of each setting."""
    text = (ROOT / "app/services/Settings.h").read_text()
    rows = re.findall(r'\{"([\w-]+)", Kind::(\w+), "([^"]*)"\},', text)
    return [(name, kind, default.replace("\\\\", "\\")) for name, kind, default in rows]


class Documents(unittest.TestCase):
    def test_the_manual_lists_every_setting_with_its_form_and_default(self):
        text = (ROOT / "docs/manual/settings.md").read_text()
        rows = re.findall(r"^\| `([\w-]+)` \| (.*) \| `(.*)` \|$", text, re.M)
        self.assertGreater(len(rows), 10)
        self.assertEqual([(name, default) for name, _, default in rows],
                         [(name, default) for name, _, default in table()])
        for (_, what, _), (name, kind, _) in zip(rows, table()):
            self.assertEqual(what.split(":")[0] in FORMS.values(), kind in FORMS, name)
            self.assertTrue(what.startswith(FORMS.get(kind, "")), name)

    def test_the_manual_page_tells_the_defaults(self):
        text = (ROOT / "packaging/wrenlow-relay.1").read_text()
        told = re.findall(r'^\.BR ([\w-]+) " \((.*)\)"$', text, re.M)
        defaults = {name: default for name, _, default in table()} | {"logwhere": "logs/ in the data folder"}
        self.assertGreater(len(told), 3)
        for name, default in told:
            self.assertEqual(default, defaults.get(name), name)


if __name__ == "__main__":
    unittest.main()
