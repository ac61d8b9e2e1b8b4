"""The rows of bench/side-by-side. Each is a function of (build, quick) that measures the programs of a
build folder and gives a list of Results. The programs of a row are measured in turn, each several
times, so that a machine that is busy at times is so for all of them."""
import json
import pathlib
import re
import shutil
import statistics
import subprocess
import tempfile
import threading
import time
import wave
from dataclasses import dataclass

from rig import RATE, Rig, Use, await_true, tone

BLOCK = 1.5 / 27.5  # seconds of sound
CALLBACKS = 50  # a second: the sound server is asked for 20 ms at once
RUNS = 5
MOST_SCANS = {'pure': 1.0, 'rich': 1.0, 'noisy': 1.0, 'noise': 1.5}
NOTE = (150, 40, 150, 85)  # in the main window, without the lamps: left, top, width, height


@dataclass
class Result:
    what: str
    measured: str
    aim: str = ''
    is_met: bool | None = None


def median(numbers):
    return statistics.median(numbers)


def percentile(numbers, percent):
    return sorted(numbers)[min(len(numbers) - 1, int(len(numbers) * percent / 100))]


def short(number):
    return f'{number:.0f}' if number >= 100 else f'{number:.3g}'


def compared(what, unit, mine, theirs, factor, aim):
    """A row in which the tuner is to need at most a share of what each of the others needs."""
    measured = f'{short(mine)} {unit}' + ''.join(
        f'; {name} {short(value)} {unit} ({value / mine:.1f} times)'
        for name, value in theirs.items())
    return Result(what, measured, aim,
                  all(mine <= value * factor for value in theirs.values()) if theirs else None)


def missing(program):
    return Result(program, 'not installed')


def run_for_seconds(command):
    """How long a process took from its start to its end, and the most memory it held in MiB."""
    since = time.monotonic()
    # The system counts what a process was before it became another, so it is to be a small one.
    done = subprocess.run(['/usr/bin/time', '-f', '%M', *command], stdin=subprocess.DEVNULL,
                          stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, check=True)
    return time.monotonic() - since, int(done.stderr.split()[-1]) / 1024


def in_turn(commands, runs, measure):
    """The results of each command's runs, by its name."""
    results = {name: [] for name in commands}
    for _ in range(runs):
        for name, command in commands.items():
            results[name].append(measure(command))
    return results


def write_recording(path, seconds):
    notes = [tone(round(220 * 2 ** (n / 12))) for n in range(12)]
    with wave.open(str(path), 'wb') as file:
        file.setparams((1, 2, RATE, 0, 'NONE', ''))
        for second in range(seconds):
            file.writeframesraw(notes[second % len(notes)])


def detector(build, quick):
    command = [build / 'bin/orvane-bench', '--benchmark_filter=^(scan|detectPitch)/',
               '--benchmark_format=json', f'--benchmark_min_time={0.05 if quick else 0.2}']
    times = {}
    for _ in range(1 if quick else RUNS):
        done = subprocess.run(command, capture_output=True, text=True, check=True)
        for entry in json.loads(done.stdout)['benchmarks']:
            times.setdefault(entry['name'], []).append(entry['cpu_time'])
    ratios = {}
    for name in times:
        what, _, case = name.partition('/')
        if what == 'scan':
            ratio = median(times[f'detectPitch/{case}']) / median(times[name])
            ratios.setdefault(case.partition('/')[0], []).append((ratio, case))
    return [Result(f'detectPitch against a plain scan of the same block, {signal}',
                   f'{min(found)[0]:.2f} to {max(found)[0]:.2f} times its time '
                   f'({len(found)} pitches and rates)', f'at most {MOST_SCANS[signal]} times',
                   max(found)[0] <= MOST_SCANS[signal])
            for signal, found in ratios.items()]


def input_procedure(build, quick):
    runs = [subprocess.run([build / 'bin/orvane-input-worst'], capture_output=True, text=True,
                           check=True).stdout for _ in range(1 if quick else RUNS)]
    numbers = [dict(zip(run.split()[::2], run.split()[1::2])) for run in runs]
    worst = median([float(n['worst']) for n in numbers])
    share = 100 * worst / float(numbers[0]['period'])
    return [Result('input procedure, 512 frames, 2 channels, 192 kHz, worst of a million',
                   f"{worst:.1f} µs = {share:.2f} % of the period (median call "
                   f"{median([float(n['median']) for n in numbers]):.2f} µs; the machine alone "
                   f"{median([float(n['machine']) for n in numbers]):.1f} µs; "
                   f"{numbers[0]['priority']} priority)", 'under 2 %', share < 2)]


def analyze(build, quick):
    rows = []
    with tempfile.TemporaryDirectory(prefix='orvane-bench-') as folder:
        recording = pathlib.Path(folder) / 'recording.wav'
        write_recording(recording, 60 if quick else 600)
        mine = [build / 'bin/orvane-cli', 'analyze', '--json', recording]
        if shutil.which('aubiopitch'):
            # A reading every 2048 frames, about as often as here, where it is every 2618.
            def theirs(method):
                return ['aubiopitch', '-r', '0', '-p', method, '-B', '2048', '-H', '2048',
                        '-i', recording]
            methods = ('default', 'yinfft', 'yinfast', 'yin', 'mcomb', 'fcomb', 'schmitt')
            fastest = min(methods, key=lambda method: run_for_seconds(theirs(method))[0])
            taken = in_turn({'mine': mine, 'theirs': theirs(fastest)}, RUNS,
                            lambda command: run_for_seconds(command)[0])
            rows.append(compared(
                f'analyze, a file of {1 if quick else 10} minutes, whole process', 's',
                median(taken['mine']), {f'aubiopitch -p {fastest} -B 2048 -H 2048': median(taken['theirs'])}, 1 / 4,
                'at least 4 times faster'))
        else:
            rows.append(missing('aubiopitch'))
        lengths = (60, 120, 240) if quick else (60, 600, 3600, 36000)
        measured = {}
        for seconds in lengths:
            write_recording(recording, seconds)
            runs = [run_for_seconds(mine) for _ in range(RUNS)]
            measured[seconds] = [median(column) for column in zip(*runs)]
    per_minute = [60000 * taken / seconds for seconds, (taken, _) in measured.items()]
    memory = [peak for _, peak in measured.values()]
    lengths = ', '.join(f'{seconds // 60} min' for seconds in measured)
    rows.append(Result(f'analyze, {lengths}: time a minute of sound',
                       ', '.join(f'{ms:.2f} ms' for ms in per_minute), 'not growing',
                       # The first is half start-up.
                       max(per_minute[2:]) <= 1.1 * per_minute[1]))
    rows.append(Result(f'analyze, {lengths}: most memory',
                       ', '.join(f'{peak:.2f} MiB' for peak in memory), 'equal within 1 MiB',
                       max(memory) - min(memory) <= 1))
    return rows


def command_line(build, _quick):
    cli = build / 'bin/orvane-cli'
    taken = median([run_for_seconds([cli, '--version'])[0] for _ in range(4 * RUNS)])
    libraries = subprocess.run(['ldd', cli], capture_output=True, text=True, check=True).stdout
    toolkits = re.findall(r'lib(?:Qt\d|gtk|gdk)\S*', libraries)
    return [Result('orvane-cli --version, whole process', f'{1000 * taken:.1f} ms', 'under 20 ms',
                   taken < 0.02),
            Result('orvane-cli, window toolkits linked', ', '.join(toolkits) or 'none', 'none',
                   not toolkits)]


def latency(build, quick):
    taken = []
    with Rig() as rig:
        for _ in range(1 if quick else RUNS):
            program = rig.start(build / 'bin/orvane-latency', '200', stdout=subprocess.PIPE)
            taken += [float(line) for line in program.communicate()[0].split()]
    middle, high = median(taken), percentile(taken, 99)
    return [Result('block full to pixels on screen, everything changing',
                   f'median {middle:.2f} ms, 99th percentile {high:.2f} ms ({len(taken)} blocks)',
                   'median under 3 ms, 99th percentile under 8 ms', middle < 3 and high < 8)]


def onset(build, quick):
    """From a tone's first sample at the server to the first reading of it, a line of the terminal
    program. The tones come at all places in a block."""
    taken = []
    lines = []
    tones = {hertz: tone(hertz) for hertz in (196, 220, 262, 294)}
    trials = 12 if quick else 60
    with Rig(is_fed_by_pipe=True) as rig:
        program = rig.start(build / 'bin/orvane-cli', 'listen', '--json', stdout=subprocess.PIPE)
        reader = threading.Thread(target=lambda: lines.extend(
            (time.monotonic(), json.loads(line)) for line in program.stdout))
        reader.start()
        time.sleep(2)
        for trial in range(trials):
            hertz = list(tones)[trial % len(tones)]
            rig.play(None)
            time.sleep(0.4 + BLOCK * trial / trials)
            since = rig.play(tones[hertz])
            time.sleep(0.4)
            taken += [at - since for at, reading in lines if at > since and
                      abs((reading.get('frequency') or 0) - hertz) < 3][:1]
        rig.stop(program)
        reader.join()
    middle, aim = 1000 * median(taken), 1000 * BLOCK + 25
    return [Result('sound at the server to reading, a tone switched on',
                   f'median {middle:.1f} ms, longest {1000 * max(taken):.1f} ms '
                   f'({len(taken)} of {trials} tones)', f'median within {aim:.1f} ms',
                   middle <= aim and len(taken) == trials)]


def _open(rig, command):
    """Starts it; the program and the seconds until its first window was there."""
    before = set(rig.screen.windows())
    since = time.monotonic()
    program = rig.start(*command)
    await_true(lambda: set(rig.screen.windows()) - before, pause=0.001)
    return program, time.monotonic() - since


def _use(rig, command, seconds):
    program, _ = _open(rig, command)
    time.sleep(4)
    use = Use(program.pid)
    time.sleep(seconds)
    taken = use.taken()
    rig.stop(program)
    return taken


def live(build, quick):
    commands = {'orvane': [build / 'bin/orvane']}
    if shutil.which('lingot'):
        commands['lingot'] = ['lingot']
    seconds, runs = (3, 1) if quick else (10, RUNS)
    with Rig() as rig:
        rig.play(tone(196))
        loud = in_turn(commands, runs, lambda command: _use(rig, command, seconds))
        rig.play(None)
        silent = [_use(rig, commands['orvane'], seconds) for _ in range(runs)]
        hidden = _hidden(rig, commands['orvane'], seconds)

    def middle(taken, key):
        return median([use[key] for use in taken])

    mine = middle(loud['orvane'], 'cpu')
    theirs = {name: middle(taken, 'cpu') for name, taken in loud.items() if name != 'orvane'}
    rows = [compared('live windows, a steady tone, details and needle meter', '% of a core', mine,
                     theirs, 1 / 5, 'at most 2 % and a fifth of lingot')]
    rows[0].is_met = mine <= 2 and rows[0].is_met is not False
    rows.append(compared(
        'the same, resident memory', 'MiB', middle(loud['orvane'], 'memory'),
        {name: middle(taken, 'memory') for name, taken in loud.items() if name != 'orvane'}, 1,
        'below lingot'))
    if not theirs:
        rows.append(missing('lingot'))
    idle = middle(silent, 'cpu')
    rows.append(Result('live windows, silence', f'{idle:.2f} % of a core', 'at most 1 %', idle <= 1))
    # There are as many callbacks as the busiest thread, the input thread, wakes.
    others = median([sum(use['wakes'].values()) - max(use['wakes'].values()) for use in silent])
    whole = median([sum(use['wakes'].values()) for use in silent])
    rows.append(Result('the same, wake-ups a second',
                       f'{whole:.1f}, of them {whole - others:.1f} by callbacks',
                       f'at most {CALLBACKS} callbacks, {1 / BLOCK:.1f} blocks and 2',
                       others <= 1 / BLOCK + 2 and whole - others <= 1.02 * CALLBACKS))
    return rows + hidden


def _hidden(rig, command, seconds):
    program, _ = _open(rig, command)
    time.sleep(3)
    rig.screen.minimise_all()
    time.sleep(2)
    use = Use(program.pid)
    time.sleep(seconds)
    taken = use.taken()
    rig.stop(program)
    wakes = sum(taken['wakes'].values())
    return [Result('windows minimised', f"{taken['cpu']:.3f} % of a core, {wakes:.1f} wake-ups a "
                   'second', '0 % and no wake-ups but the toolkit\'s own',
                   taken['cpu'] < 0.05 and wakes < 1)]


def start(build, quick):
    """The others to their first window; the tuner also until its window shows what it hears."""
    others = [name for name in ('lingot', 'fmit') if shutil.which(name)]
    readings = []
    with Rig() as rig:
        rig.keep_awake()
        program, _ = _open(rig, [build / 'bin/orvane'])
        silence = _shown(rig)[-1][1]
        rig.stop(program)
        rig.play(tone(196))
        time.sleep(1)

        def opened(command):
            since = time.monotonic()
            program, seconds = _open(rig, command)
            if command[0] not in others:
                at, note = _shown(rig)[-1]
                if note == silence:
                    raise RuntimeError('the window has come to no reading')
                readings.append(at - since)
            time.sleep(1)
            rig.stop(program)
            return seconds

        taken = in_turn({'orvane': [build / 'bin/orvane']} | {name: [name] for name in others},
                        2 if quick else 2 * RUNS, opened)
    middle = {name: 1000 * median(times) for name, times in taken.items()}
    first = middle.pop('orvane')
    return [compared('start to first window', 'ms', first, middle, 1, 'faster than both'),
            compared('start to a reading in the window, of which one block of sound takes '
                     f'{1000 * BLOCK:.1f} ms; the others to their first window', 'ms',
                     1000 * median(readings), middle, 1, 'faster than both'),
            *(missing(name) for name in ('lingot', 'fmit') if name not in others)]


def _shown(rig):
    """What the note's place in the main window showed, each with the time from which on it did; the
    last it has shown for half a second."""
    await_true(lambda: rig.screen.window_named('Orvane'), pause=0.001)
    window = rig.screen.window_named('Orvane')
    shown = []
    until = time.monotonic() + 1.5
    while time.monotonic() < until:
        seen = rig.screen.pixels(window, *NOTE)
        if not shown or seen != shown[-1][1]:
            shown.append((time.monotonic(), seen))
        time.sleep(0.002)
    if until - shown[-1][0] < 0.5:
        raise RuntimeError('what the window shows does not settle')
    return shown


ROWS = {'detector': detector, 'input': input_procedure, 'analyze': analyze, 'cli': command_line,
        'latency': latency, 'onset': onset, 'live': live, 'start': start}
