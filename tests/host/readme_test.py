"""The README and the page on stages do what they say."""
import os
import re

from pages import PageTest, ROOT


class Readme(PageTest):
    def test_the_pages(self):
        for page in ["README.md", "docs/stages.md"]:
            self.setUp()
            self.follow(page)
        for target in re.findall(r"\]\(([^)#]+)", self.read(os.path.join(ROOT, "README.md")).decode()):
            self.assertTrue(os.path.exists(os.path.join(ROOT, target)), target)
