"""vastra eval: how it shows values, code and faults. What equations compute is tested in tests/equations."""
import math

from commands import CommandTest

# Text, inputs, passes, and the variables after the last pass; None for a fault.
VALUES = [
    ("y = 2 * a + 1; n = n + 1; x = x + 1;", ["a=1.5", "x=5"], 3, {"a": 1.5, "x": 5.0, "y": 4.0, "n": 3.0}),  # x is the input
    ("y = -a; z = y - y;", ["a=inf"], 1, {"a": "inf", "y": "-inf", "z": "nan"}),
    ("y = a;", ["a=-1e-3", "a=2"], 1, {"a": -0.0010000000474974513, "y": -0.0010000000474974513}),
    ("y = Grün;", ["Grün=1"], 1, None),
    ("", ["a=1"], 1, {"a": 1.0}),
]

# Text, the statement with the fault, its offset, and the lines with the fault and the caret.
FAULTS = [
    ("a = 1;\n\ty = /* ü */ (2;", 2, 17, "\ty = /* ü */ (2", "\t              ^"),
    ("y = 1 + *" + "ü" * 100 + "; z = 1;", 1, 8, "y = 1 + *" + "ü" * 29, " " * 8 + "^"),
    ("y =" + " " * 58 + "b", 1, 61, " =" + " " * 58 + "b", " " * 60 + "^"),
    ("y = 1 \x1b[2J\x7f\x9b + b", 1, 6, "y = 1 ?[2J?? + b", "      ^"),
]


class Eval(CommandTest):
    def evaluate(self, text, variables=(), passes=1, status=0):
        inputs = [part for variable in variables for part in ("--var", variable)]
        return self.expect(["eval", text, *inputs, "--passes", str(passes), "--json"], status, out=None).json()

    def test_values_after_the_last_pass(self):
        for text, variables, passes, values in VALUES:
            self.assertEqual(values, self.evaluate(text, variables, passes, values is None).get("values"))

    def test_a_fault_has_its_statement_offset_and_caret(self):
        for text, statement, offset, line, caret in FAULTS:
            self.assertEqual({"error": {"statement": statement, "offset": offset}}, self.evaluate(text, status=1))
            message, *shown = self.expect(["eval", text], 1, err=None).err.splitlines()
            self.assertRegex(message, r"\Avastra: eval: statement %d, offset %d: \w+" % (statement, offset))
            self.assertEqual([line, caret], shown)

    def test_code_and_results_and_what_is_undefined(self):
        self.assertEqual({
            "statements": [{"text": "y = a > 0 ? b : c", "variable": "y", "result": 2.0,
                            "code": [[275, 0.0, -2.0, None], [1002, -1.0, 0.0, 3], [269, -3.0, 0.0, None],
                                     [1003, 0.0, 0.0, 4], [269, -4.0, 0.0, None]]},
                           {"text": " z = 1", "variable": "z", "result": 1.0, "code": [[269, 1.0, 0.0, None]]}],
            "positions": [0, 18, 25], "values": {"a": 1.0, "b": 2.0, "c": 3.0, "y": 2.0, "z": 1.0}},
            self.evaluate("y = a > 0 ? b : c; z = 1;", ["a=1", "b=2", "c=3"]))
        statements = self.evaluate("y = 1 / 3; z = log(0); w = exp(1000); v = exp(1);")["statements"]
        self.assertEqual([1 / 3, "undefined", "inf", math.e], [statement["result"] for statement in statements])
        self.expect(["eval", "y = a / 3; y = y + 1; x = 1 / 0; z = 0 - x; n = x + z;", "--var", "a=1"],
                    out="y = 1.3333334\nx = inf (undefined)\nz = -inf\nn = nan\n")
