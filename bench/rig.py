"""A desktop and a sound server of one's own, to run tuners in: a screen without a monitor, a window
manager, a session bus, and a sound server whose one input plays what it is told. Times are seconds on
the monotonic clock."""
import array
import ctypes
import math
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import threading
import time

RATE = 48000  # frames a second
CHUNK = RATE // 100  # frames; written every 10 ms


def await_true(condition, patience=10.0, pause=0.02):
    end = time.monotonic() + patience
    while not condition():
        if time.monotonic() > end:
            raise TimeoutError('waited in vain')
        time.sleep(pause)


def tone(hertz):
    """A second of a tone of four partials, 16 bits a frame; to be played for ever, hertz is whole."""
    partials = ((1, 0.3), (2, 0.1), (3, 0.06), (4, 0.03))
    return array.array('h', (
        round(32767 * sum(level * math.sin(2 * math.pi * hertz * k * i / RATE)
                          for k, level in partials))
        for i in range(RATE))).tobytes()


class Feeder:
    """Writes sound into a pipe at the pace of a sound card, silence at first."""

    def __init__(self, pipe):
        self._pipe = pipe
        self._sound = None
        self._started_at = None
        self._is_ending = False
        self._thread = threading.Thread(target=self._run)
        self._thread.start()

    def play(self, sound):
        """None is silence. Returns when the first of it was written: the time of that."""
        self._sound = sound
        self._started_at = None
        await_true(lambda: self._started_at is not None, pause=0.001)
        return self._started_at

    def end(self):
        self._is_ending = True
        self._thread.join()

    def _run(self):
        silence = bytes(2 * CHUNK)
        at = 0
        due = time.monotonic()
        while not self._is_ending:
            due += CHUNK / RATE
            time.sleep(max(0.0, due - time.monotonic()))
            is_new = self._started_at is None
            sound = self._sound
            now = time.monotonic()
            try:
                os.write(self._pipe, silence if sound is None else sound[2 * at:2 * (at + CHUNK)])
            except BrokenPipeError:
                return
            at = (at + CHUNK) % RATE
            if is_new:
                self._started_at = now


class Rig:
    """Use as a context. Programs are started with `start`; what is left of them ends with it.

    The input is either fed by a pipe, which knows when each sound came, or it is what a player plays
    into a sink that, like a card, wakes as seldom as its clients let it.
    """

    def __init__(self, is_fed_by_pipe=False):
        self._is_fed_by_pipe = is_fed_by_pipe
        self._player = None
        self.feeder = None

    def __enter__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix='orvane-bench-'))
        self._programs = []
        self.environment = {
            name: value for name, value in os.environ.items()
            if name in ('PATH', 'USER', 'LOGNAME')}
        for name in ('home/.config', 'runtime', 'pulse', 'state'):
            (self.folder / name).mkdir(parents=True, mode=0o700)
        self.environment |= {
            'LANG': 'C.UTF-8', 'QT_QPA_PLATFORM': 'xcb', 'NO_AT_BRIDGE': '1',
            'GSETTINGS_BACKEND': 'memory', 'HOME': f'{self.folder}/home',
            'XDG_CONFIG_HOME': f'{self.folder}/home/.config',
            'XDG_RUNTIME_DIR': f'{self.folder}/runtime',
            'PULSE_RUNTIME_PATH': f'{self.folder}/pulse',
            'PULSE_STATE_PATH': f'{self.folder}/state', 'PULSE_COOKIE': f'{self.folder}/cookie',
            'PULSE_SERVER': f'unix:{self.folder}/native',
            'DBUS_SESSION_BUS_ADDRESS': f'unix:path={self.folder}/bus'}
        try:
            self._start_desktop()
            self._start_sound()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self._end_player()
        if self.feeder is not None:
            self.feeder.end()
        if hasattr(self, 'screen'):
            self.screen.close()
        for program in reversed(self._programs):
            self.stop(program)
        shutil.rmtree(self.folder)

    def start(self, *command, **more):
        """A program in the rig's desktop. What it says goes to the file `log`."""
        with open(self.folder / 'log', 'ab') as log:
            program = subprocess.Popen(
                command, env=self.environment,
                **{'stdin': subprocess.DEVNULL, 'stdout': log, 'stderr': log} | more)
        self._programs.append(program)
        return program

    def stop(self, program):
        if program in self._programs:
            self._programs.remove(program)
        program.terminate()
        try:
            program.wait(5)
        except subprocess.TimeoutExpired:
            program.kill()
            program.wait()

    def _start_desktop(self):
        reading, writing = os.pipe()
        self.start('Xvfb', '-displayfd', str(writing), '-screen', '0', '1600x1200x24', '-dpi', '96',
                   '-nolisten', 'tcp', '-noreset', pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as told:
            self.environment['DISPLAY'] = ':' + told.readline().strip()
        self.screen = Screen(self.environment['DISPLAY'])
        self.start('dbus-daemon', '--session', '--nofork', '--nopidfile', '--nosyslog',
                   '--address=' + self.environment['DBUS_SESSION_BUS_ADDRESS'])
        await_true((self.folder / 'bus').exists)
        self.start('openbox', '--sm-disable')
        await_true(lambda: self.screen.root_property('_NET_SUPPORTING_WM_CHECK'))

    def _start_sound(self):
        pipe = self.folder / 'mic'
        modules = [f'module-native-protocol-unix auth-anonymous=1 socket={self.folder}/native']
        if self._is_fed_by_pipe:
            modules.append(f'module-pipe-source source_name=mic file={pipe} format=s16le '
                           f'rate={RATE} channels=1')
        else:
            modules += [f'module-null-sink sink_name=feed rate={RATE} channels=1 format=s16le',
                        'module-remap-source source_name=mic master=feed.monitor channels=1 '
                        'remix=no']
        self.start('pulseaudio', '-n', '--daemonize=no', '--use-pid-file=no', '--exit-idle-time=-1',
                   '--high-priority=no', '--realtime=no',
                   *(word for module in modules for word in ('-L', module)))
        await_true(lambda: subprocess.run(
            ['pactl', 'info'], env=self.environment, capture_output=True).returncode == 0)
        if self._is_fed_by_pipe:
            self.feeder = Feeder(os.open(pipe, os.O_WRONLY))

    def play(self, sound):
        """The same second over and over, until something else is played; None is silence. The time
        at which the first of it was written."""
        if self._is_fed_by_pipe:
            return self.feeder.play(sound)
        self._end_player()
        if sound is None:
            return time.monotonic()
        reading, writing = os.pipe()
        self._player = self.start('pacat', '-d', 'feed', '--raw', f'--rate={RATE}', '--channels=1',
                                  '--format=s16le', stdin=reading)
        os.close(reading)
        self.feeder = Feeder(writing)
        return self.feeder.play(sound)

    def keep_awake(self):
        """Someone listens from now on: sound comes at once, as from a card, where the sink would
        else sleep for as long as the player lets it."""
        self.start('parec', '-d', 'mic', '--raw', '--latency-msec=10', stdout=subprocess.DEVNULL)

    def _end_player(self):
        if self._player is not None:
            self.feeder.end()
            self.stop(self._player)
            self._player = self.feeder = None

class Screen:
    """What can be seen on a display, by way of the X library."""

    _ALL_PLANES = 0xffffffff
    _Z_PIXMAP = 2

    def __init__(self, name):
        self._x = x = ctypes.CDLL('libX11.so.6')
        for function in ('XOpenDisplay', 'XGetImage'):
            getattr(x, function).restype = ctypes.c_void_p
        for function in ('XDefaultRootWindow', 'XInternAtom'):
            getattr(x, function).restype = ctypes.c_ulong
        self._display = ctypes.c_void_p(x.XOpenDisplay(name.encode()))
        if not self._display:
            raise RuntimeError(f'no display {name}')
        self._root = ctypes.c_ulong(x.XDefaultRootWindow(self._display))

    def close(self):
        self._x.XCloseDisplay(self._display)

    def root_property(self, name):
        """The numbers that a property of the root window holds."""
        x, data = self._x, ctypes.POINTER(ctypes.c_ulong)()
        kind, count, rest = ctypes.c_ulong(), ctypes.c_ulong(), ctypes.c_ulong()
        form = ctypes.c_int()
        atom = ctypes.c_ulong(x.XInternAtom(self._display, name.encode(), 0))
        x.XGetWindowProperty(
            self._display, self._root, atom, ctypes.c_long(0), ctypes.c_long(1000), 0,
            ctypes.c_ulong(0), ctypes.byref(kind), ctypes.byref(form), ctypes.byref(count),
            ctypes.byref(rest), ctypes.byref(data))
        numbers = list(data[:count.value])
        if data:
            x.XFree(data)
        return numbers

    def windows(self):
        """The programs' windows, the first shown first."""
        return self.root_property('_NET_CLIENT_LIST')

    def window_named(self, name):
        """Of the programs' windows; 0 while there is none."""
        for window in self.windows():
            title = ctypes.c_char_p()
            if self._x.XFetchName(self._display, ctypes.c_ulong(window), ctypes.byref(title)):
                is_it = title.value == name.encode()
                self._x.XFree(title)
                if is_it:
                    return window
        return 0

    def minimise_all(self):
        for window in self.windows():
            self._x.XIconifyWindow(self._display, ctypes.c_ulong(window), 0)
        self._x.XFlush(self._display)

    def pixels(self, window, x, y, width, height):
        """The bytes of a rectangle of a window, nothing of which may be covered."""
        image = self._x.XGetImage(self._display, ctypes.c_ulong(window), x, y, width, height,
                                  ctypes.c_ulong(self._ALL_PLANES), self._Z_PIXMAP)
        if not image:
            return b''
        place = ctypes.cast(image, ctypes.POINTER(_XImage)).contents
        pixels = ctypes.string_at(place.data, place.bytes_per_line * height)
        self._x.XFree(ctypes.c_void_p(place.data))
        self._x.XFree(ctypes.c_void_p(image))
        return pixels


class _XImage(ctypes.Structure):
    """The first fields of the library's structure."""
    _fields_ = [('width', ctypes.c_int), ('height', ctypes.c_int), ('xoffset', ctypes.c_int),
                ('format', ctypes.c_int), ('data', ctypes.c_void_p), ('byte_order', ctypes.c_int),
                ('bitmap_unit', ctypes.c_int), ('bitmap_bit_order', ctypes.c_int),
                ('bitmap_pad', ctypes.c_int), ('depth', ctypes.c_int),
                ('bytes_per_line', ctypes.c_int)]


class Use:
    """What a running process took of the machine between making this and `taken`."""

    _TICKS = os.sysconf('SC_CLK_TCK')

    def __init__(self, process):
        self._proc = pathlib.Path(f'/proc/{process}')
        self._since = time.monotonic()
        self._cpu = self._cpu_seconds()
        self._switches = self._wake_ups()

    def taken(self):
        """Share of a core in per cent; wake-ups a second of each thread; resident MiB."""
        seconds = time.monotonic() - self._since
        switches = self._wake_ups()
        return {'cpu': 100.0 * (self._cpu_seconds() - self._cpu) / seconds,
                'wakes': {thread: (count - self._switches.get(thread, 0)) / seconds
                          for thread, count in switches.items()},
                'memory': self._resident()}

    def _cpu_seconds(self):
        # Finer than the ticks of `stat`, where the system tells it.
        try:
            return sum(int((task / 'schedstat').read_text().split()[0])
                       for task in (self._proc / 'task').iterdir()) / 1e9
        except OSError:
            fields = (self._proc / 'stat').read_text().rpartition(')')[2].split()
            return (int(fields[11]) + int(fields[12])) / self._TICKS

    def _wake_ups(self):
        counts = {}
        for task in (self._proc / 'task').iterdir():
            for line in (task / 'status').read_text().splitlines():
                if line.startswith('voluntary_ctxt_switches:'):
                    counts[f"{(task / 'comm').read_text().strip()} {task.name}"] = int(
                        line.split()[1])
        return counts

    def _resident(self):
        for line in (self._proc / 'status').read_text().splitlines():
            if line.startswith('VmRSS:'):
                return int(line.split()[1]) / 1024
        return 0.0
