"""vastra eval and the page on equations: how values, code and faults are shown."""
import math

from pages import PageTest

# Text, inputs, and the variables; None for a fault.
VALUES = [
    ("y = -a; z = y - y;", ["a=inf"], {"a": "inf", "y": "-inf", "z": "nan"}),
    ("y = a;", ["a=-1e-3", "a=2"], {"a": -0.0010000000474974513, "y": -0.0010000000474974513}),
    ("y = Grün;", ["Grün=1"], None),
    ("", ["a=1"], {"a": 1.0}),
]

# Text, the statement with the fault, its offset, and the lines with the fault and the caret.
FAULTS = [
    ("a = 1;\n\ty = /* ü */ (2;", 2, 17, "\ty = /* ü */ (2", "\t              ^"),
    ("y = 1 + *" + "ü" * 100 + "; z = 1;", 1, 8, "y = 1 + *" + "ü" * 29, " " * 8 + "^"),
    ("y =" + " " * 58 + "b", 1, 61, " =" + " " * 58 + "b", " " * 60 + "^"),
    ("y = 1 \x1b[2J\x7f\x9b + b", 1, 6, "y = 1 ?[2J?? + b", "      ^"),
]


class Eval(PageTest):
    def test_the_page(self):
        self.follow("docs/equations.md")

    def evaluate(self, text, variables=(), status=0):
        inputs = [part for variable in variables for part in ("--var", variable)]
        return self.expect(["eval", text, *inputs, "--json"], status, out=None).json()

    def test_values(self):
        for text, variables, values in VALUES:
            self.assertEqual(values, self.evaluate(text, variables, values is None).get("values"))

    def test_a_fault_has_its_statement_offset_and_caret(self):
        for text, statement, offset, line, caret in FAULTS:
            self.assertEqual({"error": {"statement": statement, "offset": offset}}, self.evaluate(text, status=1))
            message, *shown = self.expect(["eval", text], 1, err=None).err.splitlines()
            self.assertRegex(message, r"\Avastra: eval: statement %d, offset %d: \w+" % (statement, offset))
            self.assertEqual([line, caret], shown)

    def test_results_are_doubles_and_undefined_is_shown(self):
        statements = self.evaluate("y = 1 / 3; z = log(0); w = exp(1000); v = exp(1);")["statements"]
        self.assertEqual([1 / 3, "undefined", "inf", math.e], [statement["result"] for statement in statements])
        self.expect(["eval", "y = a / 3; y = y + 1; x = 1 / 0; z = 0 - x; n = x + z;", "--var", "a=1"],
                    out="y = 1.3333334\nx = inf (undefined)\nz = -inf\nn = nan\n")
