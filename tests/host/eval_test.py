"""vastra eval: what a user learns of equations."""
import math
import unittest

from commands import CommandTest

# Text, inputs, passes, and the variables after the last pass.
VALUES = [
    ("y = 2 * a + 1;", ["a=1.5"], 1, {"a": 1.5, "y": 4.0}),
    ("n = n + 1", [], 3, {"n": 3.0}),
    ("b = a + 1; a = 1;", [], 1, {"b": 1.0, "a": 1.0}),
    ("b = a + 1; a = 1;", [], 2, {"b": 2.0, "a": 1.0}),
    ("y = 0.1;", [], 1, {"y": 0.10000000149011612}),
    ("y = a / 0; z = y;", ["a=1"], 1, {"a": 1.0, "y": "inf", "z": "inf"}),
    ("y = -a; z = y - y;", ["a=inf"], 1, {"a": "inf", "y": "-inf", "z": "nan"}),
    ("x = x + 1;", ["x=5"], 1, {"x": 5.0}),  # computes into a variable that no name reaches
    ("y = a;", ["a=1", "a=2"], 1, {"a": 1.0, "y": 1.0}),
    ("y = Grün;", ["Grün=1"], 1, None),
    ("y = a;", ["a=-1e-3"], 1, {"a": -0.0010000000474974513, "y": -0.0010000000474974513}),
    ("/* note */ y = 1; // end\n", [], 1, None),
    ("", ["a=1"], 1, {"a": 1.0}),
]

SYNTAX = "no statement of the language"
UNKNOWN = "a name that nothing assigns"

# Text, the statement with the fault, its offset, what is told of it, and the line with the caret.
FAULTS = [
    ("y = ;", 1, 4, SYNTAX, "y = ", "    ^"),
    ("a = 1; y = b * 2;", 2, 5, UNKNOWN, " y = b * 2", "     ^"),
    ("y = 1 +", 1, 7, SYNTAX, "y = 1 +", "       ^"),
    ("a = 1;\n\ty = /* ü */ (2;", 2, 17, SYNTAX, "\ty = /* ü */ (2", "\t              ^"),
    ("a = 1; /* end */", 2, 10, SYNTAX, " /* end */", "          ^"),
    ("x /* = */ = 1;", 1, 5, "the word before", "x /* = */ = 1", "     ^"),
    ("y = 1 + " + "ü" * 100 + "; z = 1;", 1, 8, SYNTAX, "y = 1 + " + "ü" * 30, " " * 8 + "^"),
    ("y = 1" + " + 1" * 40 + " + b" + " + 1" * 40, 1, 168, UNKNOWN, "1 + " * 15 + "b" + " + 1" * 14 + " + ", " " * 60 + "^"),
    ("y = 1 \x1b[2J + b", 1, 6, SYNTAX, "y = 1 ?[2J + b", "      ^"),
]


class Eval(CommandTest):
    def evaluate(self, text, variables=(), passes=1):
        inputs = [part for variable in variables for part in ("--var", variable)]
        return self.vastra("eval", text, *inputs, "--passes", str(passes), "--json")

    def test_values_after_the_last_pass(self):
        for text, variables, passes, values in VALUES:
            with self.subTest(text=text, passes=passes):
                result = self.evaluate(text, variables, passes)
                self.assertEqual("", result.err)
                self.assertEqual(0 if values is not None else 1, result.status)
                self.assertEqual(values, result.json().get("values"))

    def test_faults_are_told_with_statement_offset_and_caret(self):
        for text, statement, offset, why, line, caret in FAULTS:
            with self.subTest(text=text[:40]):
                result = self.evaluate(text)
                self.assertEqual((1, ""), (result.status, result.err))
                self.assertEqual({"statement": statement, "offset": offset}, result.json()["error"])
                plain = self.vastra("eval", text)
                self.assertEqual((1, b""), (plain.status, plain.out))
                told, *shown = plain.err.splitlines()
                self.assertRegex(told, r"\Avastra: eval: statement %d, offset %d: %s" % (statement, offset, why))
                self.assertEqual([line, caret], shown)

    def test_nesting_has_an_end(self):
        told, *shown = self.vastra("eval", "y = " + "(" * 100000 + "1").err.splitlines()
        self.assertRegex(told, r"offset \d+: nested too deeply\Z")
        self.assertEqual(["(" * 120, " " * 60 + "^"], shown)

    def test_the_code_of_a_statement(self):
        result = self.evaluate("y = a > 0 ? b : c; z = 1;", ["a=1", "b=2", "c=3"]).json()
        self.assertEqual({
            "statements": [
                {"text": "y = a > 0 ? b : c", "variable": "y", "result": 2.0,
                 "code": [[275, 0.0, -2.0, None], [1002, -1.0, 0.0, 3], [269, -3.0, 0.0, None],
                          [1003, 0.0, 0.0, 4], [269, -4.0, 0.0, None]]},
                {"text": " z = 1", "variable": "z", "result": 1.0, "code": [[269, 1.0, 0.0, None]]}],
            "positions": [0, 18, 25],
            "values": {"a": 1.0, "b": 2.0, "c": 3.0, "y": 2.0, "z": 1.0}}, result)

    def test_results_are_doubles_and_undefined_is_said(self):
        statements = self.evaluate("y = 0.1; z = log(0); w = exp(1000);").json()["statements"]
        self.assertEqual([0.1, "undefined", "inf"], [statement["result"] for statement in statements])

    def test_plain_output_names_what_is_assigned(self):
        result = self.vastra("eval", "y = a / 3; x = 1 / 0; y = y + 1;", "--var", "a=1")
        self.assertEqual((0, ""), (result.status, result.err))
        self.assertEqual(b"y = 1.3333334\nx = inf (undefined)\n", result.out)

    def test_numbers_read_back_to_the_same_double(self):
        result = self.evaluate("y = 1 / 3; z = exp(1); w = 1e99;").json()["statements"]
        self.assertEqual([1 / 3, math.e, 1e99], [statement["result"] for statement in result])


if __name__ == "__main__":
    unittest.main()
