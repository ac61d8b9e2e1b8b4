#!/usr/bin/env python3
"""Changes core/ in one place at a time and counts the changes that the tests notice.

Usage: mutate.py BUILD [BUILD…] [--jobs N] [--every N] [--only FILE] [--list]

A BUILD is a build folder with core-tests in it. Each mutant is compiled by itself with the BUILD's own
command, linked with the BUILD's objects, and run; what survives in one meets the next, best a slower
one with the address sanitizer, which notices what reads or writes past an end. A mutant that does not
compile is none. Survivors are looked up in equivalent.txt, which says why they do the same. Ends with
1 when a survivor is not explained there, or fewer than 95 per cent are killed.
"""
import argparse
import collections
import concurrent.futures
import os
import pathlib
import re
import resource
import shlex
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
REQUIRED_SHARE = 0.95
# The tests take less than a second and 100 MiB: what takes this much has lost its way.
CPU_SECONDS = 4
SANITIZER_OPTIONS = "hard_rss_limit_mb=1000:allocator_may_return_null=1:detect_leaks=1"

# What stands between spaces is an operator, not part of a type: the sources are clang-formatted.
OPERATORS = [
    (r"(?<= )<(?= )", ["<=", ">="]), (r"(?<= )>(?= )", [">=", "<="]),
    (r"(?<= )<=(?= )", ["<", ">"]), (r"(?<= )>=(?= )", [">", "<"]),
    (r"(?<= )==(?= )", ["!="]), (r"(?<= )!=(?= )", ["=="]),
    (r"(?<= )\+(?= )", ["-"]), (r"(?<= )-(?= )", ["+"]),
    (r"(?<= )\*(?= )", ["/"]), (r"(?<= )/(?= )", ["*"]), (r"(?<= )%(?= )", ["*"]),
    (r"(?<= )&&(?= )", ["||"]), (r"(?<= )\|\|(?= )", ["&&"]),
    (r"(?<= )<<(?= )", [">>"]), (r"(?<= )>>(?= )", ["<<"]),
    (r"(?<= )&(?= )", ["|"]), (r"(?<= )\|(?= )", ["&"]),
    (r"(?<= )\+=(?= )", ["-=", "="]), (r"(?<= )-=(?= )", ["+=", "="]),
    (r"\+\+", ["--"]), (r"(?<![-\w])--(?=\w)", ["++"]),
    (r"(?<=[ (])!(?=[\w(])", [""]), (r"(?<=[ (])-(?=[\w(])", [""]),
    (r"(?<= )\?(?= )", ["&& false ?", "|| true ?"]),
    (r"\btrue\b", ["false"]), (r"\bfalse\b", ["true"]),
    (r"\bstd::min\b", ["std::max"]), (r"\bstd::max\b", ["std::min"]),
    (r"\bstd::floor\b", ["std::ceil"]), (r"\bstd::ceil\b", ["std::floor"]),
    (r"\bstd::lround\b", ["static_cast<long>"]), (r"\bstd::round\b", ["std::trunc"]),
    (r"\bstd::log2\b", ["std::log"]), (r"\bbreak(?=;)", ["continue"]), (r"\bcontinue(?=;)", ["break"]),
]
NUMBER = re.compile(r"(?<![\w.'])(0x[0-9A-Fa-f']+|\d[\d']*(?:\.\d+)?(?:e[-+]?\d+)?)([uUlLfF]*)(?![\w.'])")
STATEMENT = re.compile(r"^\s+(?!return|using|const |auto |static |break|continue|case|default|throw|\}|friend|namespace)"
                       r"[\w:.\->\[\]*()]+(?: [-+*/|&]?= .*|\(.*\)|\+\+|--)?;$")

Mutant = collections.namedtuple("Mutant", "file line start end text")


def blank(source):
    """The source with comments, literals in quotes and preprocessor lines replaced by blanks of the same length."""
    def hide(match):
        return re.sub(r"[^\n]", "\x01", match.group())
    pattern = r'//[^\n]*|/\*.*?\*/|R"\((?:.*?)\)"|u?"(?:\\.|[^"\\\n])*"|u?\'(?:\\.|[^\'\\\n])+\'|^\s*#[^\n]*'
    # A quote between digits separates thousands.
    guarded = re.sub(r"(?<=\d)'(?=\d)", "\x02", source)
    return re.sub(pattern, hide, guarded, flags=re.S | re.M).replace("\x02", "'")


def other_numbers(digits, suffix):
    plain = digits.replace("'", "")
    if plain.startswith("0x"):
        return [hex(int(plain, 16) + 1) + suffix]
    if "." in plain or "e" in plain:
        value = float(plain)
        return [repr(value + 1) + suffix, repr(value * 1.001 if value else 0.001) + suffix]
    value = int(plain)
    return [str(value + 1) + suffix] + ([str(value - 1) + suffix] if value else [])


def mutants_of(path):
    source = path.read_text()
    visible = blank(source)
    found = []

    def add(start, end, text):
        found.append(Mutant(path, source.count("\n", 0, start) + 1, start, end, text))

    for pattern, replacements in OPERATORS:
        for match in re.finditer(pattern, visible):
            for replacement in replacements:
                add(match.start(), match.end(), replacement)
    for match in NUMBER.finditer(visible):
        for text in other_numbers(*match.groups()):
            add(match.start(), match.end(), text)
    start = 0
    for line in visible.split("\n"):
        if STATEMENT.match(line):
            indent = len(line) - len(line.lstrip())
            add(start + indent, start + len(line) - 1, "")
        for match in re.finditer(r"\b(if|while) \(", line):
            depth, at = 1, match.end()
            while depth and at < len(line):
                depth += {"(": 1, ")": -1}.get(line[at], 0)
                at += 1
            if not depth and "=" not in line[match.end():at].replace("==", "").replace("<=", "").replace(">=", "").replace("!=", ""):
                add(start + match.end(), start + at - 1, f"!({source[start + match.end():start + at - 1]})")
        start += len(line) + 1
    return sorted(found, key=lambda mutant: (mutant.start, mutant.text))


def describe(mutant):
    source = mutant.file.read_text()
    before = source[mutant.start:mutant.end]
    line = source.split("\n")[mutant.line - 1].strip()
    column = mutant.start - source.rfind("\n", 0, mutant.start) - 1
    nth = source.split("\n")[mutant.line - 1][:column].count(before) + 1 if before else 1
    return f"{mutant.file.name} | {line} | {before} ({nth}) -> {mutant.text or 'nothing'}"


def short_lived():
    resource.setrlimit(resource.RLIMIT_CPU, (CPU_SECONDS, CPU_SECONDS))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


class Bench:
    """One build folder's own commands, to compile one file anew and link it with the rest."""

    def __init__(self, build):
        self.build = build
        self.environment = dict(os.environ, ASAN_OPTIONS=SANITIZER_OPTIONS)
        self.compile = {}
        lines = subprocess.run(["ninja", "-C", build, "-t", "commands", "core-tests"], check=True,
                               capture_output=True, text=True).stdout.splitlines()
        for line in lines:
            found = re.search(r"-o (core/\S+\.o) -c (\S+)", line)
            if found:
                self.compile[pathlib.Path(found[2]).name] = (line, found[1], found[2])
        self.link = lines[-1].removeprefix(": && ").removesuffix(" && :")
        self.objects = [compiled[1] for compiled in self.compile.values()]

    def run(self, command, seconds, before=None):
        try:
            return subprocess.run(command, cwd=self.build, timeout=seconds, preexec_fn=before,
                                  env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL).returncode
        except subprocess.TimeoutExpired:
            return "timeout"

    def program(self, folder, replaced, by):
        words = shlex.split(self.link)
        output = str(folder / "core-tests")
        words[words.index("-o") + 1] = output
        objects = [by if name == replaced else name for name in self.objects]
        at = words.index("core/liborvane_core.a")
        words[at:at + 1] = objects
        words.insert(1, "-fuse-ld=gold")
        if self.run(words, 120) != 0:
            raise RuntimeError(f"core-tests does not link: {shlex.join(words)}")
        return output

    def judge(self, mutant, folder):
        """Returns none, killed or survived."""
        command, made, source = self.compile[mutant.file.name]
        text = mutant.file.read_text()
        mutated = folder / mutant.file.name
        mutated.write_text(text[:mutant.start] + mutant.text + text[mutant.end:])
        by = str(folder / "mutant.o")
        words = shlex.split(command)
        if words[0].endswith("ccache"):
            words = words[1:]
        for flag in ("-MD", "-Werror"):
            if flag in words:
                words.remove(flag)
        for flag in ("-MT", "-MF"):
            at = words.index(flag)
            del words[at:at + 2]
        words[words.index("-o") + 1] = by
        words[words.index(source)] = str(mutated)
        words += ["-w", "-O1", f"-I{ROOT}"]
        if self.run(words, 120) != 0:
            return "none"
        tests = [self.program(folder, made, by), "--gtest_fail_fast", "--gtest_brief=1"]
        # Its own tests first, which are quick and kill most.
        for which in (f"{mutant.file.stem}*", "*"):
            if self.run(tests + [f"--gtest_filter={which}"], 60, short_lived) != 0:
                return "killed"
        return "survived"


def explained(path):
    reasons = {}
    for line in path.read_text().splitlines() if path.exists() else []:
        if line and not line.startswith("#"):
            what, _, reason = line.rpartition(" | ")
            reasons[what] = reason
    return reasons


def main():
    options = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    options.add_argument("builds", nargs="+")
    options.add_argument("--jobs", type=int, default=2)
    options.add_argument("--every", type=int, default=1, help="only every nth mutant")
    options.add_argument("--only", help="only this file of core/")
    options.add_argument("--list", action="store_true", help="name the mutants and end")
    arguments = options.parse_args()

    files = [path for path in sorted((ROOT / "core").glob("*.cpp")) if arguments.only in (None, path.name)]
    mutants = [mutant for path in files for mutant in mutants_of(path)][::arguments.every]
    if arguments.list:
        print("\n".join(describe(mutant) for mutant in mutants))
        return 0
    benches = [Bench(build) for build in arguments.builds]
    counts = collections.defaultdict(collections.Counter)
    survivors = []

    def one(mutant):
        for bench in benches:
            with tempfile.TemporaryDirectory() as folder:
                verdict = bench.judge(mutant, pathlib.Path(folder))
            if verdict != "survived":
                break
        return mutant, verdict

    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        for mutant, verdict in pool.map(one, mutants):
            counts[mutant.file.name][verdict] += 1
            if verdict == "survived":
                survivors.append(describe(mutant))
                print("survived:", survivors[-1], flush=True)

    print(f"\n{'file':28}{'mutants':>8}{'killed':>8}{'survived':>9}")
    total = collections.Counter()
    for name, count in counts.items():
        total += count
        print(f"{name:28}{count['killed'] + count['survived']:8}{count['killed']:8}{count['survived']:9}")
    made = total["killed"] + total["survived"]
    share = total["killed"] / made if made else 0.0
    print(f"{'together':28}{made:8}{total['killed']:8}{total['survived']:9}   {100 * share:.2f} % killed")
    reasons = explained(HERE / "equivalent.txt")
    open_ends = [survivor for survivor in survivors if survivor not in reasons]
    for survivor in open_ends:
        print("not explained:", survivor)
    return 1 if open_ends or share < REQUIRED_SHARE else 0


if __name__ == "__main__":
    sys.exit(main())
