"""The README and the pages on equations and stages do what they say."""
import os
import re
import unittest

from pages import PageTest

ROOT = os.path.join(os.path.dirname(__file__), "../..")
README = os.path.join(ROOT, "README.md")
EQUATIONS = os.path.join(ROOT, "docs/equations.md")
STAGES = os.path.join(ROOT, "docs/stages.md")


class Readme(PageTest):
    def test_the_tour(self):
        self.follow(README)

    def test_the_equations(self):
        self.follow(EQUATIONS)

    def test_the_stages(self):
        self.follow(STAGES)

    def test_its_links_lead_somewhere(self):
        with open(README, encoding="utf-8") as file:
            for target in re.findall(r"\]\(([^)#]+)", file.read()):
                self.assertTrue(os.path.exists(os.path.join(os.path.dirname(README), target)), target)


if __name__ == "__main__":
    unittest.main()
