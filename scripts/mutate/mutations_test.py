"""What counts as a mutation, and what is left alone."""

import pathlib
import re
import subprocess
import tempfile
import unittest

import equivalents
import mutations
import rooms
import schemata
import workshop

CHECKOUT = pathlib.Path(__file__).resolve().parents[2]


def changes(text):
    """(kind, changed lines) of all mutations."""
    return [(mutation.kind, mutation.after) for mutation in mutations.mutations_of("File.cpp", text)]


def inside(statement):
    """What becomes of a statement in a function, without the rest of the function."""
    return [(kind, after) for kind, after in changes(f"void f() {{\n{statement}\n}}\n")]


class Mutations(unittest.TestCase):
    def test_comments_and_preprocessor_lines_are_left_alone(self):
        self.assertEqual(changes('#include "a.h"\n#define X (1 + \\\n    2)\n// a == 1\n/* b && c\n 3 */\n'), [])

    def test_operators_become_their_neighbours(self):
        self.assertEqual(inside("call(a < b);"),
                         [("statement", ";"), ("operator", "call(a <= b);"), ("operator", "call(a > b);")])
        self.assertEqual(inside("call(a && !b);"),
                         [("statement", ";"), ("operator", "call(a || !b);"), ("operator", "call(a && b);")])

    def test_template_brackets_references_and_pointers_are_no_operators(self):
        self.assertEqual(inside("std::vector<int>& list = *all;\nuse(list);"), [("statement", ";")])

    def test_a_flag_is_left_out(self):
        self.assertIn(("operator", "open(path, O_RDONLY);"), inside("open(path, O_RDONLY | O_CLOEXEC);"))

    def test_numbers_change_by_one_in_their_own_notation(self):
        self.assertEqual(changes("constexpr int kA = 1;"),
                         [("constant", "constexpr int kA = 0;"), ("constant", "constexpr int kA = 2;")])
        self.assertEqual(changes("constexpr int kA = 0700;")[1], ("constant", "constexpr int kA = 0701;"))
        self.assertEqual(changes("constexpr int kA = 0xffU;")[0], ("constant", "constexpr int kA = 0x100U;"))
        self.assertEqual(changes("constexpr int kA = 1'000;")[1], ("constant", "constexpr int kA = 999;"))

    def test_texts_grow_by_a_character(self):
        self.assertEqual(changes('constexpr auto kA = "a; == 1";'), [("text", 'constexpr auto kA = "a; == 1~";')])
        self.assertEqual(changes('constexpr auto kA = R"x(1")x";'), [("text", 'constexpr auto kA = R"x(1"~)x";')])

    def test_a_search_goes_the_other_way_where_that_makes_a_difference(self):
        self.assertIn(("constant", "use(text.rfind(c));"), inside("use(text.find(c));"))
        self.assertIn(("constant", "use(text.rfind(c) == other);"), inside("use(text.find(c) == other);"))
        for npos in ("std::string::npos", "std::string_view::npos"):
            kinds = [kind for kind, _ in inside(f"use(text.find(part(c)) != {npos});")]
            self.assertNotIn("constant", kinds)
        self.assertIn(("constant", "use(text.rfind(c) == at + std::string::npos);"),
                      inside("use(text.find(c) == at + std::string::npos);"))

    def test_conditions_become_constants(self):
        def conditions(statement):
            return [after for kind, after in inside(statement) if kind == "condition"]

        self.assertEqual(conditions("if (ready()) {\n}"), ["if (false) {", "if (true) {"])
        self.assertEqual(conditions("while (ready()) {\n}"), ["while (false) {"])
        self.assertEqual(conditions("if (int n = count(); ready(n)) {\n}"),
                         ["if (int n = count(); false) {", "if (int n = count(); true) {"])

    def test_a_condition_that_declares_is_left_alone(self):
        self.assertEqual([kind for kind, _ in inside("if (auto found = find()) {\n}")], [])

    def test_statements_go_also_in_lambdas_and_behind_labels(self):
        self.assertIn(("statement", "run([&] { ; });"), inside("run([&] { note(); });"))
        self.assertIn(("statement", "case 1: ;"), inside("switch (n) {\ncase 1: note();\n}"))

    def test_a_returned_value_becomes_the_default(self):
        self.assertEqual(inside("return value;"), [("statement", "return {};")])

    def test_declarations_outside_of_functions_stay(self):
        self.assertEqual(changes("namespace N {\nclass C {\n  int member_;\n  void call();\n};\n}\n"), [])

    def test_a_declaration_whose_name_is_used_stays(self):
        self.assertEqual(inside("const Guard guard(lock);\nuse(guard);"), [("statement", ";")])
        self.assertIn(("statement", ";"), inside("const Guard guard(lock);\nuse();"))

    def test_a_mutated_text_differs_in_one_place(self):
        text = "int f() {\n    return a + 1;\n}\n"
        found = next(mutation for mutation in mutations.mutations_of("F.cpp", text) if mutation.kind == "operator")
        self.assertEqual(found.mutated, "int f() {\n    return a - 1;\n}\n")
        self.assertEqual(found.line, 2)

    def test_a_key_survives_a_move_and_tells_equal_lines_apart(self):
        line = "f(1);\n"
        keys = [mutation.key for mutation in mutations.mutations_of("F.cpp", f"void g() {{\n{line}{line}}}\n")]
        moved = [mutation.key for mutation in mutations.mutations_of("F.cpp", f"\n\nvoid g() {{\n{line}{line}}}\n")]
        self.assertEqual(keys, moved)
        self.assertEqual(len(set(keys)), len(keys))


class Schemata(unittest.TestCase):
    TEXT = """int f(int a) {
    const int b = a + 1;
    if (a < b) {
        note();
    }
    for (int i = 0; i < a; ++i) {
        run([&] { return b - i; });
    }
    return b;
}
constexpr int kA = 1;
"""

    def schema(self):
        found = [mutation for mutation in mutations.mutations_of("F.cpp", self.TEXT) if mutation.unit]
        return schemata.Schema(self.TEXT, found)

    def run_as(self, number, schema):
        """The text that remains when this number is chosen: conditions of the choices are worked out, nothing else."""
        text = "".join(piece for piece, _, _ in schema.pieces[1:])
        token = re.compile(rf"\s*if \({schemata.CHOICE}\((\d+)\)\) {{\n(.*?)\n}} else ", re.DOTALL)
        while found := token.search(text):
            if int(found.group(1)) == number:
                return found.group(2)
            text = text[:found.start()] + text[found.end():]
        return text

    def test_every_mutant_is_in_the_text_under_its_number(self):
        schema = self.schema()
        self.assertEqual(sorted(schema.mutants), list(range(1, len(schema.mutants) + 1)))
        for number in schema.mutants:
            self.assertEqual(schema.text.count(f"{schemata.CHOICE}({number})"), 1)

    def test_constants_of_the_compiler_are_not_chosen_at_run_time(self):
        found = mutations.mutations_of("F.cpp", self.TEXT)
        self.assertEqual([mutation.after for mutation in found if mutation.unit is None],
                         ["for (int i = 1; i < a; ++i) {", "constexpr int kA = 0;", "constexpr int kA = 2;"])

    def test_a_declaration_stays_and_chooses_its_value(self):
        self.assertRegex(self.schema().text, rf"const int b = \(\n{schemata.CHOICE}\(\d+\) \?\n\(a - 1\)")

    def test_lines_are_their_mutants(self):
        schema = self.schema()
        for number, mutant in schema.mutants.items():
            changed = schema.alternative(number, mutant.unit)
            if not changed.strip() or mutant.unit[2] != "statement":
                continue
            line = schema.text[:schema.text.index(f"{schemata.CHOICE}({number})")].count("\n") + 2
            self.assertEqual(schema.owner_of_line(line), (mutant.unit, number))

    def test_a_chosen_statement_takes_the_place_of_the_original(self):
        schema = self.schema()
        number = next(number for number, mutant in schema.mutants.items() if mutant.before == "note();")
        self.assertEqual(self.run_as(number, schema).strip(), ";")
        self.assertIn("note();", self.run_as(0, schema))


class Equivalents(unittest.TestCase):
    TEXT = "# Why\n# it is so.\nF.cpp\n- f(1);\n+ f(0);\n"

    def mutants(self, path):
        return {mutation.after: mutation for mutation in mutations.mutations_of(path, "void g() {\n    f(1);\n}\n")}

    def test_a_mutant_is_known_by_its_file_and_lines(self):
        named = equivalents.Equivalents(self.TEXT)
        self.assertEqual(named.reason(self.mutants("F.cpp")["f(0);"]), "Why it is so.")
        self.assertIsNone(named.reason(self.mutants("F.cpp")["f(2);"]))
        self.assertIsNone(named.reason(self.mutants("G.cpp")["f(0);"]))

    def test_a_mutant_without_a_reason_is_refused(self):
        with self.assertRaises(ValueError):
            equivalents.Equivalents("F.cpp\n- f(1);\n+ f(0);\n")

    def test_of_equal_lines_the_one_below_the_named_line_is_meant(self):
        text = "void g() {\n    f(1);\n    h();\n    f(1);\n}\n"
        named = equivalents.Equivalents("# Why.\nF.cpp\n  h();\n- f(1);\n+ f(0);\n")
        reasons = {mutation.line: named.reason(mutation) for mutation in mutations.mutations_of("F.cpp", text)
                   if mutation.after == "f(0);"}
        self.assertEqual(reasons, {2: None, 4: "Why."})

    def test_several_lines_above_tell_more(self):
        text = "void g() {\n    a();\n    h();\n    f(1);\n    b();\n    h();\n    f(1);\n}\n"
        named = equivalents.Equivalents("# A.\nF.cpp\n  a();\n  h();\n- f(1);\n+ f(0);\n\n"
                                        "# B.\nF.cpp\n  b();\n  h();\n- f(1);\n+ f(0);\n")
        reasons = {mutation.line: named.reason(mutation) for mutation in mutations.mutations_of("F.cpp", text)
                   if mutation.after == "f(0);"}
        self.assertEqual(reasons, {4: "A.", 7: "B."})

    def test_each_named_line_is_in_its_file_once(self):
        self.assertEqual(list(equivalents.Equivalents().vague(CHECKOUT)), [])

    def test_a_line_that_is_there_twice_or_not_at_all_is_vague(self):
        with tempfile.TemporaryDirectory() as folder:
            checkout = pathlib.Path(folder)
            (checkout / "F.cpp").write_text("f(1);\nh();\nf(1);\n")
            for lines, places in (("- f(1);", [[1, 3]]), ("- f(2);", [[]]), ("  h();\n- f(1);", [])):
                named = equivalents.Equivalents(f"# Why.\nF.cpp\n{lines}\n+ f(0);\n")
                self.assertEqual([found for _, _, found in named.vague(checkout)], places)


class Programs(unittest.TestCase):
    def test_the_filter_leaves_out_what_does_not_count_and_the_others(self):
        self.assertEqual(rooms.Program("T").tests_but(), "*-:")
        self.assertEqual(rooms.Program("T").tests_but("A.b:C.d"), "*-:A.b:C.d")
        self.assertEqual(rooms.Program("T", without="Page.*").tests_but("A.b"), "*-Page.*:A.b")


class Waiting(unittest.TestCase):
    CHATTY = "while :; do echo; sleep 0.1; done"

    def status(self, script, wall=1000, silence=1000):
        with tempfile.NamedTemporaryFile() as log:
            child = subprocess.Popen(["sh", "-c", script], stdout=log, start_new_session=True)
            return workshop.wait_for(child, workshop.Limits(wall, 1000, silence), pathlib.Path(log.name))

    def test_a_program_that_ends_is_waited_for(self):
        self.assertEqual(self.status("exit 3"), 3)

    def test_a_program_that_goes_on_for_ever_is_ended_though_it_writes(self):
        self.assertIsNone(self.status(self.CHATTY, wall=0))

    def test_a_program_that_is_silent_for_too_long_is_ended(self):
        self.assertIsNone(self.status("echo; sleep 1000", silence=0))


class SlowTests(unittest.TestCase):
    LOG = """[ RUN      ] Quick.Test
[       OK ] Quick.Test (1000 ms)
[ RUN      ] Slow.Test
[       OK ] Slow.Test (1001 ms)
[ RUN      ] All/Slow.Values/0
[       OK ] All/Slow.Values/0, where GetParam() = 7 (20000 ms)
[ RUN      ] Slow.Failure
[  FAILED  ] Slow.Failure (5000 ms)
[----------] 4 tests from Slow (27001 ms total)
"""

    def test_tests_that_passed_after_more_than_a_second_come_last(self):
        with tempfile.TemporaryDirectory() as folder:
            log = pathlib.Path(folder) / "log"
            log.write_text(self.LOG, encoding="utf-8")
            self.assertEqual(workshop.slow_tests(log), ["Slow.Test", "All/Slow.Values/0"])


if __name__ == "__main__":
    unittest.main()
