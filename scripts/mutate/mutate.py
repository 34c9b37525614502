"""Changes the sources one place at a time and shows which changes no test notices. See ../mutate.sh."""

import argparse
import collections
import concurrent.futures
import dataclasses
import itertools
import json
import os
import pathlib
import random
import re
import subprocess
import sys
import time

import equivalents
import mutations
import rooms
import workshop

CHECKOUT = pathlib.Path(__file__).resolve().parents[2]
# The possible outcomes of a mutant. "identical" is the compiler's own word, at -O2; "equivalent" is equivalent.txt's.
COUNTED = ("killed", "timeout", "survived")
VERDICTS = (*COUNTED, "identical", "equivalent", "invalid")


@dataclasses.dataclass
class Result:
    key: str
    room: str
    path: str
    line: int
    kind: str
    before: str
    after: str
    verdict: str
    test: str
    seconds: float


def options():
    parser = argparse.ArgumentParser(prog="mutate.sh", description=__doc__)
    parser.add_argument("where", nargs="*", metavar="ROOM|FILE", help="rooms (see --list) or source files; default: all")
    parser.add_argument("--sample", type=int, metavar="N", help="mutants that count in each room; default: all")
    parser.add_argument("--seed", type=int, default=1, help="chooses the sample (default: 1)")
    parser.add_argument("--changed", metavar="BASE", nargs="?", const="main", help="only lines that differ from a commit")
    parser.add_argument("--quick", action="store_true",
                        help="only what can be chosen while a program runs; survivors are not compared at -O2")
    parser.add_argument("--list", action="store_true", help="show the mutants, build nothing")
    parser.add_argument("--results", metavar="FILE", help="keep the results here and go on from there")
    parser.add_argument("--again", action="store_true", help="run those again that survived in the file of results")
    parser.add_argument("--folder", default=str(CHECKOUT / "build" / "mutate"), help="where mutants are built")
    parser.add_argument("--jobs", "-j", type=int, default=1, help="mutants at a time, each in a build folder of its own")
    return parser.parse_args()


def changed_lines(base):
    """The lines of each file that differ from a commit."""
    text = subprocess.run(["git", "-C", CHECKOUT, "diff", "-U0", base, "--", "src", "tools"], check=True, text=True,
                          stdout=subprocess.PIPE).stdout
    lines, path = collections.defaultdict(set), None
    for line in text.splitlines():
        if line.startswith("+++ "):
            path = line[6:].rstrip("\t")
        elif hunk := re.match(r"@@ -\S+ \+(\d+)(?:,(\d+))? @@", line):
            first, count = int(hunk.group(1)), int(hunk.group(2) or 1)
            lines[path].update(range(first, first + count))
    return lines


def candidates(wanted, changed, quick):
    """The mutations of every room that was asked for."""
    found = collections.OrderedDict()
    unknown = set(wanted)
    for path in sorted(str(file.relative_to(CHECKOUT)) for folder in ("src", "tools")
                       for file in (CHECKOUT / folder).rglob("*.cpp")):
        room = rooms.room_of(path)
        if room is None:
            continue
        names = {room.name, path} & set(wanted)
        unknown -= names
        if wanted and not names or changed is not None and path not in changed:
            continue
        for mutation in mutations.mutations_of(path, (CHECKOUT / path).read_text()):
            if (changed is None or mutation.line in changed[path]) and (mutation.unit or not quick):
                found.setdefault(room, []).append(mutation)
    if unknown:
        raise workshop.Refusal(f"No such room or file with mutants: {', '.join(sorted(unknown))}. "
                               f"Rooms: {', '.join(room.name for room in rooms.ROOMS)}")
    return found


class Run:
    def __init__(self, arguments):
        self.arguments = arguments
        self.named = equivalents.Equivalents()
        self.results = {}
        self.killers = collections.defaultdict(list)
        self.shops = []
        if arguments.results and os.path.exists(arguments.results):
            for line in pathlib.Path(arguments.results).read_text().splitlines():
                result = Result(**json.loads(line))
                self.results[result.key] = result
                self.remember(result)
        if arguments.again:
            self.results = {key: result for key, result in self.results.items() if result.verdict != "survived"}

    def remember(self, result):
        known = self.killers[result.path]
        if result.verdict == "killed" and "." in result.test and result.test not in known:
            known.insert(0, result.test)
            del known[12:]

    def prepare(self, room):
        while len(self.shops) < self.arguments.jobs:
            shop = workshop.Workshop(CHECKOUT, pathlib.Path(self.arguments.folder) / str(len(self.shops)))
            shop.prepare()
            self.shops.append(shop)
        for shop in self.shops:
            shop.build_programs(room.programs)

    def go_through(self, room, mutants):
        """Runs mutants of a room, in order, until as many count as were asked for; returns their results."""
        order = list(mutants)
        random.Random(f"{self.arguments.seed} {room.name}").shuffle(order)
        wanted = self.arguments.sample or len(order)
        done, ready = [], False
        while order and (missing := wanted - sum(result.verdict in COUNTED for result in done)) > 0:
            part, order = sorted(order[:missing], key=lambda mutant: (mutant.path, mutant.start)), order[missing:]
            fresh = [mutant for mutant in part if mutant.key not in self.results and not self.named.reason(mutant)]
            if fresh and not ready:
                self.prepare(room)
                ready = True
            self.run_all(room, fresh)
            done += [self.result_of(room, mutant) for mutant in part]
        return done

    def result_of(self, room, mutant):
        if self.named.reason(mutant):
            return self.make(room, mutant, "equivalent", "", 0)
        return self.results[mutant.key]

    def run_all(self, room, mutants):
        shares = [mutants[index::len(self.shops)] for index in range(len(self.shops))] if self.shops else []
        with concurrent.futures.ThreadPoolExecutor(max(1, len(shares))) as pool:
            for work in [pool.submit(self.run_share, room, shop, share) for shop, share in zip(self.shops, shares)]:
                work.result()

    def run_share(self, room, shop, mutants):
        for path, of_file in itertools.groupby(mutants, lambda mutant: mutant.path):
            of_file = list(of_file)
            together = [mutant for mutant in of_file if mutant.unit is not None]
            chosen, refused = {}, []
            if len(together) > 1:
                chosen, refused = shop.compile_many(path, together[0].text, together)
            for mutant in refused:
                self.keep(self.make(room, mutant, "invalid", "", 0))
            usual = self.judge(room, shop, path, kinds=("known", "quick")) if chosen else ("passed", "")
            if usual[0] != "passed":
                raise workshop.Refusal(f"{path} with its mutants, none of them chosen: {usual[0]} ({usual[1]})")
            survivors = []
            for number, mutant in chosen.items():
                start = time.monotonic()
                verdict, test = self.judge(room, shop, path, number)
                if verdict == "passed":
                    survivors.append((mutant, time.monotonic() - start))
                else:
                    self.keep(self.make(room, mutant, verdict, test, time.monotonic() - start))
            for mutant, seconds in survivors:
                identical = not self.arguments.quick and shop.makes_no_difference(mutant)
                verdict = "identical" if identical else "survived"
                self.keep(self.make(room, mutant, verdict, "", seconds))
            done = {*refused, *chosen.values()}
            for mutant in of_file:
                if mutant not in done:
                    start = time.monotonic()
                    verdict, test = self.judge_alone(room, shop, mutant)
                    self.keep(self.make(room, mutant, verdict, test, time.monotonic() - start))

    def judge_alone(self, room, shop, mutant):
        made = shop.compile(mutant)
        if made != "different":
            return made, ""
        verdict, test = self.judge(room, shop, mutant.path)
        if verdict != "passed":
            return verdict, test
        return ("identical" if shop.makes_no_difference(mutant) else "survived"), ""

    def judge(self, room, shop, path, number=0, kinds=("known", "quick", "slow")):
        """What the tests of the room say to the object that was compiled last, and the test that noticed it."""
        # The tests that noticed other mutants of the file notice most of the rest, quick ones most of what is left.
        known = ":".join(self.killers[path])
        for kind in kinds:
            for program in room.programs:
                slow = shop.slow[program.target]
                tests = {"known": known, "quick": program.tests_but(slow), "slow": slow}[kind]
                outcome, test = shop.test(program, path, tests, number) if tests else ("passed", "")
                if outcome != "passed":
                    return {"failed": "killed"}.get(outcome, outcome), test
        return "passed", ""

    def make(self, room, mutant, verdict, test, seconds):
        return Result(mutant.key, room.name, mutant.path, mutant.line, mutant.kind, mutant.before, mutant.after, verdict, test,
                      round(seconds, 1))

    def keep(self, result):
        self.results[result.key] = result
        self.remember(result)
        print(f"{result.verdict:10} {result.seconds:6.1f} s  {result.path}:{result.line}  {result.after}  {result.test}",
              flush=True)
        if self.arguments.results:
            with open(self.arguments.results, "a", encoding="utf-8") as file:
                file.write(json.dumps(dataclasses.asdict(result)) + "\n")


def show_survivors(results):
    for result in results:
        if result.verdict == "survived":
            print(f"\n{result.path}:{result.line}\n- {result.before}\n+ {result.after}")


def show_table(by_room):
    print(f"\n{'room':16}{'mutants':>8}" + "".join(f"{verdict:>11}" for verdict in VERDICTS) + f"{'score':>8}")
    rows = [(room.name, results) for room, results in by_room.items()]
    if len(rows) > 1:
        rows.append(("all", [result for results in by_room.values() for result in results]))
    for name, results in rows:
        count = collections.Counter(result.verdict for result in results)
        counted = sum(count[verdict] for verdict in COUNTED)
        noticed = counted - count["survived"]
        score = f"{100 * noticed / counted:.1f}" if counted else "-"
        print(f"{name:16}{counted:8}" + "".join(f"{count[verdict]:11}" for verdict in VERDICTS) + f"{score:>8}")


def main():
    arguments = options()
    changed = changed_lines(arguments.changed) if arguments.changed else None
    found = candidates(arguments.where, changed, arguments.quick)
    if arguments.list:
        for room, mutants in found.items():
            print(f"{room.name}: {len(mutants)} mutants")
            for mutant in mutants if arguments.where or changed is not None else []:
                print(f"{mutant.path}:{mutant.line}: {mutant.kind}\n- {mutant.before}\n+ {mutant.after}")
        return 0
    run = Run(arguments)
    by_room = {room: run.go_through(room, mutants) for room, mutants in found.items()}
    show_survivors([result for results in by_room.values() for result in results])
    show_table(by_room)
    return 1 if any(result.verdict == "survived" for results in by_room.values() for result in results) else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except workshop.Refusal as refusal:
        sys.exit(f"mutate.sh: {refusal}")
