#!/usr/bin/python3
"""What a screen reader gets from the reference host's settings window.

The host runs under an X server, a session bus and an accessibility bus of this
test's own, and is read over AT-SPI the way Orca reads it: by role, name,
description and the table interface, and driven by accessible actions only.

    tst_a11ysettings.py <directory of QuorvaneHost>

Debian's python3 with python3-pyatspi; Xvfb, dbus-daemon and at-spi2-core's
bus launcher (scripts/deps installs them all).
"""

import configparser
import ctypes
import importlib.util
import os
import select
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import traceback

BUS_LAUNCHER_PLACES = ("/usr/libexec/at-spi-bus-launcher", "/usr/lib/at-spi2-core/at-spi-bus-launcher")
NOT_KEPT = "The controller did not keep this value."
SPEED_MAX_X = 1800.0        # the dialog takes up to 2000 on X, the simulated controller 1500

# The Motor table: rows 0..4 are lists (the stored value is the index of the
# choice), rows 5..14 numbers shown with 2 decimals, row 8 a heading.
MOTOR_LIST_ROWS = {
    0: ("MOTOR_DIRECTION_POLAR", ["Negative", "Positive"]),
    1: ("MOTOR_CONTROL_TYPE", ["Pulse+Direction", "Double pulse"]),
    2: ("MOTOR_PWM_EDGE", ["Descending Edge", "Rising Edge"]),
    3: ("MOTOR_KEY_DIRECTION", ["Positive", "Negative"]),
    4: ("MOTOR_STARTUP_RESET", ["No", "Yes"]),
}
MOTOR_NUMBER_ROWS = {
    5: "MOTOR_PULSE_PER_MM", 6: "MOTOR_SIZE", 7: "MOTOR_ZERO_OFFSET", 9: "MOTOR_SPEED_JUMP",
    10: "MOTOR_SPEED_MAX", 11: "MOTOR_ACC_MAX", 12: "MOTOR_ACC_URGENT_STOP", 13: "MOTOR_ACC_KEY",
    14: "MOTOR_SPEED_KEY_JUMP",
}
# Values the seeded file gets besides the X max speed: none of them what the
# host writes on a fresh machine, all inside what the simulated controller
# takes, so that the table is read against the file and the X max speed stays
# the only value the controller refuses.
SEEDED = {
    "MOTOR_SPEED_MAX_1": "%g" % SPEED_MAX_X,
    "MOTOR_PULSE_PER_MM_2": "6.5432",
    "MOTOR_ZERO_OFFSET_3": "12.006",
    "MOTOR_ACC_KEY_4": "2750.5",
    "MOTOR_DIRECTION_POLAR_3": "0",
    "MOTOR_KEY_DIRECTION_1": "0",
    "MOTOR_CONTROL_TYPE_2": "1",
    "MOTOR_STARTUP_RESET_4": "0",
}

# Roles whose every showing object must carry a name; a line edit is "text"
# ("password text" in password mode).
NAMED_ROLES = {"push button", "radio button", "check box", "text", "password text", "combo box", "page tab"}

PR_SET_PDEATHSIG = 1
PR_SET_CHILD_SUBREAPER = 36
_libc = ctypes.CDLL(None, use_errno=True)


class Failure(Exception):
    pass


def wait_for(what, condition, timeout, interval=0.05):
    """condition() until it returns something true; Failure after timeout seconds."""
    deadline = time.monotonic() + timeout
    last_error = None
    while True:
        try:
            value = condition()
            if value:
                return value
        except Failure:
            raise
        except Exception as error:  # the other side may not be there yet
            last_error = error
        if time.monotonic() > deadline:
            raise Failure("timed out after %.0f s waiting for %s%s" % (
                timeout, what, " (last error: %s)" % last_error if last_error else ""))
        time.sleep(interval)


def die_with_parent():
    # A child outlives no test that is killed.
    _libc.prctl(PR_SET_PDEATHSIG, signal.SIGTERM)


def read_line(stream, timeout, what):
    ready, _, _ = select.select([stream], [], [], timeout)
    if not ready:
        raise Failure("no answer from %s within %d s" % (what, timeout))
    line = stream.readline().strip()
    if not line:
        raise Failure("%s ended without an answer" % what)
    return line


class Session:
    """X server, session bus and accessibility bus, in directories of their own."""

    def __init__(self):
        self.processes = []
        self.root = tempfile.mkdtemp(prefix="tst_a11ysettings.")
        self.env = {key: value for key, value in os.environ.items()
                    if not key.startswith(("DISPLAY", "WAYLAND_", "DBUS_", "AT_SPI_", "XDG_", "XAUTHORITY"))}
        for name in ("home", "config", "runtime", "cache", "data", "tmp"):
            path = os.path.join(self.root, name)
            os.mkdir(path, 0o700)
        self.env.update(HOME=self.path("home"), XDG_CONFIG_HOME=self.path("config"),
                        XDG_RUNTIME_DIR=self.path("runtime"), XDG_CACHE_HOME=self.path("cache"),
                        XDG_DATA_HOME=self.path("data"), TMPDIR=self.path("tmp"), GSETTINGS_BACKEND="memory")

    def path(self, *parts):
        return os.path.join(self.root, *parts)

    def spawn(self, argv, **kwargs):
        process = subprocess.Popen(argv, env=self.env, preexec_fn=die_with_parent, **kwargs)
        self.processes.append(process)
        return process

    def start(self, bus_launcher):
        # -noreset: an X server that resets when its last client leaves (the
        # bus launcher, which sets a root window property and may go) drops
        # the connections made meanwhile.
        xvfb = self.spawn(["Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp",
                           "-noreset"], stdout=subprocess.PIPE, stderr=open(self.path("xvfb.log"), "w"), text=True)
        self.xvfb = xvfb
        self.env["DISPLAY"] = ":" + read_line(xvfb.stdout, 20, "Xvfb")
        self.wait_for_display(xvfb)

        bus = self.spawn(["dbus-daemon", "--session", "--nofork", "--print-address=1",
                          "--address=unix:dir=" + self.path("runtime")],
                         stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.env["DBUS_SESSION_BUS_ADDRESS"] = read_line(bus.stdout, 20, "dbus-daemon")

        self.spawn([bus_launcher, "--launch-immediately", "--a11y=1", "--screen-reader=1"],
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        import gi
        from gi.repository import Gio, GLib
        connection = Gio.DBusConnection.new_for_address_sync(
            self.env["DBUS_SESSION_BUS_ADDRESS"],
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION,
            None, None)

        def a11y_address():
            reply = connection.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None,
                                         GLib.VariantType.new("(s)"), Gio.DBusCallFlags.NO_AUTO_START, 2000, None)
            return reply.unpack()[0]

        # This process reads the tree over the same buses. The host finds the
        # accessibility bus through the session bus, as on a desktop: Qt 6.4
        # connects to a bus named in AT_SPI_BUS_ADDRESS before its bridge
        # listens, and an application started with it never registers.
        os.environ["AT_SPI_BUS_ADDRESS"] = wait_for("the accessibility bus", a11y_address, 20)
        connection.close_sync(None)
        for key in ("DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR"):
            os.environ[key] = self.env[key]
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi
        # A host under the sanitizers on a loaded machine may take longer to
        # answer than the library's default of 800 ms.
        Atspi.set_timeout(10000, 30000)

    def x_server_state(self):
        """What became of the X server, for a failure's message."""
        if self.xvfb.poll() is None:
            return "Xvfb on %s is running" % self.env["DISPLAY"]
        return "Xvfb on %s ended with %d:\n%s" % (self.env["DISPLAY"], self.xvfb.returncode,
                                                open(self.path("xvfb.log")).read())

    def wait_for_display(self, xvfb):
        """Until the X server takes a connection; Failure with what it said if it ends instead."""
        def answers():
            if xvfb.poll() is not None:
                raise Failure(self.x_server_state())
            return subprocess.run(["xprop", "-root", "-len", "0"], env=self.env, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL).returncode == 0
        wait_for("the X server on %s to take a connection" % self.env["DISPLAY"], answers, 20)

    def stop(self):
        for process in reversed(self.processes):
            if process.poll() is None:
                process.terminate()
        for process in reversed(self.processes):
            try:
                process.wait(10)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        # What they started themselves (the accessibility bus's own daemon and
        # registry) is this process's now: it is the subreaper.
        deadline = time.monotonic() + 10
        sig = signal.SIGTERM
        while True:
            orphans = own_children()
            if not orphans:
                break
            if time.monotonic() > deadline:
                sig = signal.SIGKILL
            for pid in orphans:
                try:
                    os.kill(pid, sig)
                except ProcessLookupError:
                    pass
            for pid in orphans:
                try:
                    os.waitpid(pid, os.WNOHANG)
                except ChildProcessError:
                    pass
            time.sleep(0.05)
        shutil.rmtree(self.root, ignore_errors=True)


def own_children():
    me = os.getpid()
    children = []
    for entry in os.listdir("/proc"):
        if not entry.isdigit():
            continue
        try:
            with open("/proc/%s/stat" % entry) as stat:
                fields = stat.read().rsplit(")", 1)[1].split()
        except OSError:
            continue
        if int(fields[1]) == me:
            children.append(int(entry))
    return children


class Host:
    """One run of QuorvaneHost, found on the accessibility bus."""

    def __init__(self, session, binary, name):
        self.session = session
        self.log_path = session.path("%s.log" % name)
        env = dict(session.env, QT_QPA_PLATFORM="xcb", QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
        self.log = open(self.log_path, "w")
        self.process = subprocess.Popen([binary], env=env, stdout=self.log, stderr=subprocess.STDOUT,
                                        preexec_fn=die_with_parent)
        session.processes.append(self.process)
        import pyatspi

        def application():
            if self.process.poll() is not None:
                raise Failure("QuorvaneHost ended at start (%s):\n%s" % (session.x_server_state(), self.output()))
            desktop = pyatspi.Registry.getDesktop(0)
            for app in children(desktop):
                if app is not None and app.get_process_id() == self.process.pid:
                    return app
            return None

        self.app = wait_for("QuorvaneHost on the accessibility bus", application, 30)

    def output(self):
        self.log.flush()
        with open(self.log_path, errors="replace") as log:
            return log.read()

    def window(self, what, condition, timeout=20):
        """The host's showing top-level window for which condition(window) holds."""
        import pyatspi

        def find():
            for window in children(self.app):
                if window is not None and window.getState().contains(pyatspi.STATE_SHOWING) and condition(window):
                    return window
            return None

        return wait_for(what, find, timeout)

    def quit(self, main_window, answer=None):
        """File > Quit; answer names the button to press in the question the host asks first, if any."""
        press(find_one(main_window, "menu item", "Quit"))
        if answer is not None:
            try:
                question = self.window("the question before quitting",
                                       lambda window: find_all(window, "push button", answer), 20)
            except Failure as error:
                raise Failure("%s; QuorvaneHost %s:\n%s" % (
                    error, "is running" if self.process.poll() is None else "ended with %d" % self.process.returncode,
                    self.output()))
            press(find_one(question, "push button", answer))
        try:
            self.process.wait(60)
        except subprocess.TimeoutExpired:
            raise Failure("QuorvaneHost did not end after File > Quit:\n" + self.output())
        text = self.output()
        if self.process.returncode != 0 or "Sanitizer" in text or "runtime error" in text:
            raise Failure("QuorvaneHost ended with %d:\n%s" % (self.process.returncode, text))


def children(node):
    return [node.getChildAtIndex(i) for i in range(node.childCount)]


def role(node):
    return node.getRoleName()


def walk(node, showing_only=True):
    """node and its descendants, depth first; below a hidden object nothing shows."""
    import pyatspi
    stack = [node]
    while stack:
        current = stack.pop()
        if current is None:
            continue
        if showing_only and not current.getState().contains(pyatspi.STATE_SHOWING):
            continue
        yield current
        # A table's cells are read through its table interface.
        if role(current) != "table":
            stack.extend(reversed(children(current)))


def find_all(root, role_name, name, showing_only=False):
    return [node for node in walk(root, showing_only) if role(node) == role_name and node.name == name]


def find_one(root, role_name, name):
    found = find_all(root, role_name, name)
    if len(found) != 1:
        raise Failure("%d objects with role %r and name %r, expected one" % (len(found), role_name, name))
    return found[0]


def press(node):
    """The object's first action, as a screen reader's "activate" does."""
    action = node.queryAction()
    if action.nActions < 1:
        raise Failure("%s %r has no action" % (role(node), node.name))
    if not action.doAction(0):
        raise Failure("%s %r refused its action %r" % (role(node), node.name, action.getName(0)))


def seed_parameter_file(path):
    """The file as the host wrote it, with the SEEDED values in it instead."""
    with open(path) as source:
        lines = source.read().splitlines()
    missing = dict(SEEDED)
    for index, line in enumerate(lines):
        key, _, old = (part.strip() for part in line.partition("="))
        if key in missing:
            new = missing.pop(key)
            if float(old) == float(new):
                raise Failure("the host writes %s=%s already: seeding it would show nothing" % (key, old))
            lines[index] = "%s=%s" % (key, new)
    if missing:
        raise Failure("the host's parameter file %s lacks the keys %s" % (path, ", ".join(sorted(missing))))
    with open(path, "w") as target:
        target.write("\n".join(lines) + "\n")


def expected_motor_cells(path):
    """(row, column) -> the text the Motor table shows, from the parameter file."""
    parser = configparser.ConfigParser(interpolation=None)
    parser.optionxform = str
    parser.read(path)
    motor = parser["FACTORY_PARAM_MOTOR"]
    expected = {}
    for column in range(1, 5):
        for row, (key, choices) in MOTOR_LIST_ROWS.items():
            expected[(row, column)] = choices[int(motor["%s_%d" % (key, column)])]
        for row, key in MOTOR_NUMBER_ROWS.items():
            expected[(row, column)] = "%.2f" % float(motor["%s_%d" % (key, column)])
    return expected


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: tst_a11ysettings.py <directory of QuorvaneHost>")
    binary = os.path.join(sys.argv[1], "QuorvaneHost")
    missing = [tool for tool in ("Xvfb", "dbus-daemon") if not shutil.which(tool)]
    bus_launcher = next((path for path in BUS_LAUNCHER_PLACES if os.access(path, os.X_OK)), None)
    if not bus_launcher:
        missing.append("at-spi-bus-launcher (at-spi2-core)")
    # Only looked for: pyatspi connects when imported, and the buses are not there yet.
    try:
        import gi
        gi.require_version("Atspi", "2.0")
        if importlib.util.find_spec("pyatspi") is None:
            raise ImportError("no module named pyatspi")
    except (ImportError, ValueError) as error:
        missing.append("pyatspi for %s (python3-pyatspi, gir1.2-atspi-2.0): %s" % (sys.executable, error))
    if not os.access(binary, os.X_OK):
        missing.append(binary)
    if missing:
        print("FAIL: missing: %s; scripts/deps installs the packages" % "; ".join(missing))
        return 1

    # Whatever the buses start is reparented here and ended at the close.
    _libc.prctl(PR_SET_CHILD_SUBREAPER, 1)
    signal.signal(signal.SIGTERM, lambda *_: sys.exit("FAIL: terminated"))
    started = time.monotonic()
    session = Session()
    try:
        session.start(bus_launcher)
        failures = run(session, binary)
    except Failure as error:
        failures = [str(error)]
    except Exception as error:  # an accessibility call that failed
        traceback.print_exc()
        failures = ["%s: %s" % (type(error).__name__, error)]
    finally:
        session.stop()
    for failure in failures:
        print("FAIL: " + failure)
    print("%d failed, %.1f s" % (len(failures), time.monotonic() - started))
    return 1 if failures else 0


def run(session, binary):
    main_title = "Quorvane Reference Host"
    param_file = session.path("config", "Quorvane", "Resources", "Data", "FactoryParam.ini")

    # First run: the host saves a parameter file of its own through the plug-in.
    host = Host(session, binary, "first-run")
    window = host.window("the host's main window", lambda w: w.name == main_title)
    press(find_one(window, "menu item", "Save Parameters"))
    wait_for(param_file, lambda: os.path.exists(param_file), 20)
    host.quit(window)
    seed_parameter_file(param_file)
    expected = expected_motor_cells(param_file)
    print("parameter file written by the host and seeded: %s" % param_file)

    # Second run: the settings window on the seeded file.
    host = Host(session, binary, "second-run")
    window = host.window("the host's main window", lambda w: w.name == main_title)
    press(find_one(window, "menu item", "Machine Settings..."))
    settings = host.window("the settings window", lambda w: w.name == "Machine Settings")
    failures = []

    # a. What a person can reach is named.
    named = [node for node in walk(settings) if role(node) in NAMED_ROLES]
    print("%d showing objects that need a name" % len(named))
    for node in named:
        if not node.name.strip():
            failures.append("a %s in the settings window has no name (index %d in a %s named %r)" % (
                role(node), node.getIndexInParent(), role(node.parent), node.parent.name))

    # b. The Motor table reads as it shows.
    tables = [node for node in walk(settings) if role(node) == "table"]
    motor = next((t for t in tables if t.queryTable().nColumns == 5 and t.queryTable().nRows == 15), None)
    if motor is None:
        raise Failure("no showing 15 x 5 Motor table among %d showing tables" % len(tables))
    grid = motor.queryTable()
    print("Motor table: %d cells compared with the parameter file" % len(expected))
    for (row, column), text in sorted(expected.items()):
        cell = grid.getAccessibleAt(row, column)
        read = cell.name if cell is not None else None
        if read != text:
            failures.append("Motor cell (%d, %d) reads %r, expected %r" % (row, column, read, text))

    # c. Upload: the controller limits X max speed; the cell shows the value
    # the dialog had, marked, and says so. Nothing else is refused.
    refused = (10, 1)
    wanted = ("%.2f" % SPEED_MAX_X, NOT_KEPT)

    def speed_cell():
        cell = motor.queryTable().getAccessibleAt(*refused)
        return (cell.name, cell.description)

    if speed_cell()[1]:
        failures.append("before Upload the X max speed cell is described %r" % speed_cell()[1])
    press(find_one(settings, "push button", "Upload"))
    try:
        wait_for("the X max speed cell to read %r described %r" % wanted, lambda: speed_cell() == wanted, 20)
    except Failure as error:
        failures.append("%s; it reads %r described %r" % ((error,) + speed_cell()))
    grid = motor.queryTable()
    for (row, column), text in sorted(expected.items()):
        if (row, column) == refused:
            continue
        cell = grid.getAccessibleAt(row, column)
        if (cell.name, cell.description) != (text, ""):
            failures.append("after Upload Motor cell (%d, %d) reads %r described %r, expected %r undescribed" % (
                row, column, cell.name, cell.description, text))
    print("after Upload the X max speed cell reads %r, described %r" % speed_cell())
    # The parameter file holds the value put back, the controller its own:
    # the host asks before quitting, and the person lets it go.
    host.quit(window, "Discard")
    return failures


if __name__ == "__main__":
    sys.exit(main())
