"""The README and the pages on equations and stages do what they say."""
import os
import re

from pages import PageTest

ROOT = os.path.join(os.path.dirname(__file__), "../..")


class Readme(PageTest):
    def test_the_pages(self):
        for page in ["README.md", "docs/equations.md", "docs/stages.md"]:
            self.setUp()
            self.follow(os.path.join(ROOT, page))

    def test_its_links_lead_somewhere(self):
        with open(os.path.join(ROOT, "README.md"), encoding="utf-8") as file:
            for target in re.findall(r"\]\(([^)#]+)", file.read()):
                self.assertTrue(os.path.exists(os.path.join(ROOT, target)), target)
