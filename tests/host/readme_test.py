"""The README and the pages on equations and stages do what they say."""
import os
import re

from pages import PageTest

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../..")


class Readme(PageTest):
    def test_the_pages(self):
        for page in ["README.md", "docs/equations.md", "docs/stages.md"]:
            self.setUp()
            self.follow(os.path.join(ROOT, page))
        for target in re.findall(r"\]\(([^)#]+)", self.read(os.path.join(ROOT, "README.md")).decode()):
            self.assertTrue(os.path.exists(os.path.join(ROOT, target)), target)
