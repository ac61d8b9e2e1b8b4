#!/usr/bin/env python3
"""Which branches of the source were taken, file by file, and which were not.

Usage: coverage_report.py BUILD

A branch is one way out of a condition of the source, so every condition has two, but for those that
the compiler decides. BUILD/counts holds what the processes counted. Ends with 1 below 100 per cent of
core/ or 90 per cent of all.
"""
import json
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
FOLDERS = ('core', 'audio', 'app', 'cli', 'views')
REQUIRED = {'core': 1.0, 'all': 0.9}
DECIDED = re.compile(r'if constexpr|while \(true\)')
PLACE, TRUE, FALSE = slice(0, 4), 4, 5


def programs(build):
    return [path for folder in ('bin', 'tests') for path in sorted((build / folder).rglob('*'))
            if path.is_file() and path.open('rb').read(4) == b'\x7fELF' and path.suffix != '.o']


def counted(build):
    """Of each file its conditions, by their place: how often each way was taken, by whichever program
    and instance of a template."""
    data = build / 'counts.profdata'
    subprocess.run(['llvm-profdata', 'merge', '-sparse', '-failure-mode=all', '-o', data,
                    *sorted((build / 'counts').glob('*.profraw'))], check=True)
    first, *others = programs(build)
    exported = subprocess.run(
        ['llvm-cov', 'export', '-skip-functions', f'-instr-profile={data}', first,
         *(word for program in others for word in ('-object', program))],
        check=True, capture_output=True).stdout
    files = {}
    for file in json.loads(exported)['data'][0]['files']:
        path = pathlib.Path(file['filename'])
        if path.is_relative_to(ROOT) and path.relative_to(ROOT).parts[0] in FOLDERS:
            conditions = files.setdefault(str(path.relative_to(ROOT)), {})
            lines = path.read_text().split('\n')
            for branch in file['branches']:
                if DECIDED.search(lines[branch[0] - 1]):
                    continue
                ways = conditions.setdefault(tuple(branch[PLACE]), [0, 0])
                ways[0] += branch[TRUE]
                ways[1] += branch[FALSE]
    return files


def main():
    files = counted(pathlib.Path(sys.argv[1]).resolve())
    totals = {folder: [0, 0] for folder in (*FOLDERS, 'all')}
    print(f"{'file':40}{'branches':>9}{'taken':>7}   not taken")
    for name, conditions in sorted(files.items()):
        ways = [(place[0], way, count > 0) for place, counts in sorted(conditions.items())
                for way, count in zip(('true', 'false'), counts)]
        taken = sum(is_taken for _, _, is_taken in ways)
        for folder in (name.split('/')[0], 'all'):
            totals[folder][0] += len(ways)
            totals[folder][1] += taken
        missing = ', '.join(f'{line} {way}' for line, way, is_taken in ways if not is_taken)
        if ways:
            print(f'{name:40}{len(ways):9}{taken:7}   {missing}')
    is_enough = True
    for folder, (ways, taken) in totals.items():
        share = taken / ways if ways else 1.0
        print(f'{folder:40}{ways:9}{taken:7}   {100 * share:.1f} %')
        is_enough = is_enough and share >= REQUIRED.get(folder, 0.0)
    return 0 if is_enough else 1


if __name__ == '__main__':
    sys.exit(main())
