"""Drives a panel through its page in a real browser, and the server with requests that it must refuse.

usage: page_test.py PROGRAMS FOLDER     the folder is made anew
"""
import contextlib
import http.client
import json
import os
import pathlib
import re
import select
import shutil
import signal
import socket
import subprocess
import sys

from selenium import webdriver
from selenium.common import exceptions
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select, WebDriverWait

PROGRAMS, FOLDER = (pathlib.Path(word).resolve() for word in sys.argv[1:])
PANEL = FOLDER / "panel"
MEANWHILE = (exceptions.NoSuchElementException, exceptions.StaleElementReferenceException, # the page is being renewed
             exceptions.ElementClickInterceptedException) # or scrolled
PATIENCE = 60 # seconds, for a slow machine; nothing waits that long
FLAGS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-component-update", "--window-size=1280,800",
         "--autoplay-policy=no-user-gesture-required", f"--user-data-dir={FOLDER / 'browser'}"]
HEAR = """window.heard = [];
const start = OscillatorNode.prototype.start, stop = OscillatorNode.prototype.stop;
OscillatorNode.prototype.start = function(at) { this.begun = at; return start.call(this, at); };
OscillatorNode.prototype.stop = function(at) {
    heard.push(`${this.frequency.value} ${Math.round((at - this.begun) * 1000)}`); return stop.call(this, at); };"""

READ = """const [text, done] = arguments, call = at => [at.name, at.ts, at.ts + at.dur, at.args];
const inside = at => at.children.flatMap(child => [call(child.entry), ...inside(child)]);
import("devtools://devtools/bundled/models/trace/trace.js").then(async ({Handlers, TraceModel}) => {
    const model = TraceModel.Model.createWithAllHandlers();
    await model.parse(JSON.parse(text).traceEvents, {});
    const {data} = model.parsedTrace(0);
    done(Handlers.Threads.threadsInTrace(data).map(({pid, name, entries, tree}) => [data.Meta.processNames.get(pid).args.name,
        name, entries.map(call), [...tree.roots].map(root => [call(root.entry), inside(root)])]));
}).catch(error => done(String(error)));"""


def panel(*words):
    return subprocess.check_output([PROGRAMS / "panel", "-C", PANEL, *words], text=True)


def make_panel():
    shutil.rmtree(FOLDER, ignore_errors=True)
    installed, disk = PANEL / "fs/MMCMemory/Tarvex", FOLDER / "disk"
    panel("create", str(PANEL))
    for place in (installed, disk):
        place.mkdir()
    for name in ("TarvexHelper", "Tarvex"):
        shutil.copy(PROGRAMS / name, installed / (name + ".exe"))
    for name, settings in (("TouchBuzzer", "<Frequency>2500</Frequency>"), ("ScreenSaver",
            "<UserInactivityTimeout>60000</UserInactivityTimeout><MinLuminosityLevel>32</MinLuminosityLevel>")):
        (installed / (name + "Config.xml")).write_text(
            f"<{name}><Settings><Enabled>1</Enabled>{settings}</Settings></{name}>")
    (disk / "Tarvex.xml").write_text("""<Tarvex><Commands><Command Type="RunProcess" WaitCompletion="1"
        FilePath="\\MMCMemory\\Tarvex\\Tarvex.exe" Arguments="-from-disk"/></Commands></Tarvex>""")
    panel("registry", "write", r"HKLM\init", "Launch61", r"\MMCMemory\Tarvex\TarvexHelper.exe", "--flush")
    return disk


def check_refusals(host, path, server):
    """None of these may be obeyed, and none may end the server."""
    def status(method, place, headers=None, body=None):
        connection = http.client.HTTPConnection(host, timeout=PATIENCE)
        try:
            connection.request(method, place, body, headers or {})
            return connection.getresponse().status
        except OSError: # the server has closed while the body was still being sent
            return 0
    run, json, boot = path + "run", {"Content-Type": "application/json"}, '{"words": ["boot"]}'
    refusals = [
        (403, "GET", "/"), (403, "GET", "/events"), (403, "POST", "/run", json, boot),
        (403, "GET", path[:-2] + "0/" if path[-2] != "0" else path[:-2] + "1/"),
        (403, "GET", path, {"Host": "panel.example:" + host.split(":")[1]}), (403, "GET", path, {"Host": ""}),
        (403, "POST", run, {**json, "Origin": "http://panel.example"}, boot),
        (403, "POST", run, {**json, "Origin": "null"}, boot),
        (415, "POST", run, {"Content-Type": "text/plain"}, boot), (404, "GET", run), (404, "PUT", path + "run"),
        (404, "GET", path + "../../etc/passwd"), (404, "GET", path + "%2e%2e/page.js"),
        (400, "POST", run, json, ""), (400, "POST", run, json, '{"words": '), (400, "POST", run, json, "[" * 60000),
        (400, "POST", run, json, '{"words": "boot"}'), (400, "POST", run, json, '{"words": [{}]}'),
        (400, "POST", run, json, '{"words": []}'), (400, "POST", run, json, b'{"words": ["\xff"]}'),
        (400, "POST", run, json, r'{"words": ["boot\u0000"]}'), (413, "POST", run, json, "x" * 10_000_000)]
    for expected, *request in refusals:
        assert status(*request) in (expected, 0 if expected in (403, 413, 415) else expected), request[:3]
    for noise in (b"\r\n\r\n", b"\0" * 100000, b"POST / HTTP/1.1\r\nContent-Length: -1\r\n\r\n",
                  b"POST " + run.encode() + b" HTTP/1.1\r\nHost: " + host.encode() + b"\r\nContent-Length: 99\r\n\r\n{",
                  b"GET / HTTP/1.1\r\n" + b"X: y\r\n" * 5_000_000):
        with socket.create_connection(host.split(":")) as connection, contextlib.suppress(OSError):
            connection.sendall(noise)
    memory = re.search(r"VmHWM:\s*(\d+)", pathlib.Path(f"/proc/{server}/status").read_text())
    assert int(memory[1]) < 100_000, memory[0] # kB: it has kept what nobody should send
    idle = [socket.create_connection(host.split(":")) for _ in range(60)]
    assert status("GET", path) == 200 and not select.select(idle[-1:], [], [], 0)[0], "idle connections delay the page"
    assert '"on": false' in panel("status", "--json"), "a refused request was obeyed"


class Page:
    def __init__(self, address):
        options = webdriver.ChromeOptions()
        for flag in FLAGS:
            options.add_argument(flag)
        self.browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        self.browser.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": HEAR})
        self.browser.get(address)

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def click(self, selector):
        self.find(selector).click()

    def fill(self, form, **values):
        for name, value in values.items():
            field = self.find(f"#{form} [name='{name}']")
            field.clear()
            field.send_keys(str(value))
        self.click(f"#{form} button")

    def wait(self, what, condition):
        WebDriverWait(self.browser, PATIENCE, ignored_exceptions=MEANWHILE).until(
            lambda _: condition(), f"not seen: {what}")

    def wait_for(self, selector, text):
        self.wait(f"{text} in {selector}", lambda: text in self.find(selector).get_attribute("textContent"))

    def do(self, action, command):
        """An action that names this command, and its end."""
        action()
        self.wait_for("#command", command)
        self.wait("the end of " + command, lambda: self.find("#answer").text.startswith("→"))

    def boot(self, command="panel boot --stepped --trace"):
        self.wait_for("#power", "off")
        self.do(lambda: self.click("#boot button"), command)
        self.wait_for("#power", "on")
        self.advance("2s")

    def advance(self, time):
        self.do(lambda: self.fill("advance", time=time), "panel advance " + time)

    def send(self, known, argument):
        Select(self.find("#known")).select_by_index(known)
        self.do(lambda: self.fill("send", lparam=argument), "panel send ORVATarvexHelper")


def drive(page, disk, view):
    heard = lambda: page.browser.execute_script("return heard")
    page.click("#boot [name='--stepped']")
    page.boot()
    page.click("#tab-programs")
    page.wait_for("#programs", "TarvexHelper.exe#1")
    page.wait_for("#log", "Module manager initialization")
    page.send(3, 1000) # the screen saver's time-out
    page.send(4, 128) # its level, of 256
    page.do(lambda: page.click("[data-run=idle]"), "panel idle")
    page.advance("5s")
    page.wait_for("#light", "backlight 127")
    drag = webdriver.ActionChains(page.browser).drag_and_drop_by_offset(page.find("#screen"), 50, 0)
    page.do(drag.perform, "--release")
    page.wait_for("#light", "backlight 200")
    page.wait_for("#touches", "release")
    place = re.search(r"release.*\n(?:.* move .*\n)+.* press at (\d+), (\d+) on nothing", page.find("#touches").text).groups()
    assert abs(int(place[0]) - 400) < 4 and abs(int(place[1]) - 240) < 4, place # the middle
    page.send(4, 0)
    page.do(lambda: page.click("[data-run=idle]"), "panel idle")
    page.advance("5s")
    page.wait_for("#shows", "black: ORVAScreenSaver of TarvexHelper.exe#1")
    page.do(lambda: page.click("#screen"), "panel touch --at {} {}".format(*place))
    page.wait_for("#shows", "nothing covers it")
    page.wait_for("#touches", "release at {}, {} on ORVAScreenSaver".format(*place))
    page.wait("two clicks", lambda: heard() == 2 * ["2500 50"])

    page.click("#tab-disks")
    page.do(lambda: page.fill("plug", folder=f"{disk}\n{disk}", **{"--as": "USB Disk"}), "panel plug")
    page.advance("2s")
    page.wait_for("#disks table", "\\Hard Disk") # the second partition
    page.wait_for("#programs", "Tarvex.exe#1ended, exit code 0")
    assert "-from-disk" in (PANEL / "fs/MMCMemory/Tarvex/Tarvex.started").read_text()

    panel("trace", "export", FOLDER / "trace.json")
    viewed = (FOLDER / "trace.json").read_text(), panel("trace", "show", "--json")
    # The commands that take long block no other one.
    page.browser.execute_script("for (let i = 0; i < 9; ++i) run('advance', '9999d')")
    page.do(lambda: page.click("[data-run=cut]"), "panel cut")
    page.wait_for("#notice", "The panel went off: panel cut")
    page.boot()
    key = "TarvexHelper.exe#1 t1 CreateWindowExW[2]"
    page.wait_for(f"#track [data-key='{key}']", "CreateWindowExW")
    page.find("#find").send_keys("CreateWindowExW", Keys.ENTER, Keys.ENTER)
    page.wait_for("#line", key + "(")
    page.do(lambda: page.click("#hold"), "panel boot")
    page.wait_for(f"#track .open[data-key='{key}']", "CreateWindowExW")
    page.click("#tab-faults")
    page.click("#planned button")
    page.do(lambda: page.click("[data-run='fault release']"), "panel fault release")
    page.wait("the released call", lambda: page.click(f"#track i:not(.open)[data-key='{key}']") is None)
    page.do(lambda: page.click("#fail"), "panel boot")
    page.wait_for("#faults table", "CreateWindowExW") # the page knows of the new boot
    page.wait_for("#power", "on")
    page.advance("2s")
    page.wait_for("#programs", "TarvexHelper.exe#1ended, exit code 1")
    page.wait_for("#track .fault", "CreateWindowExW")
    assert heard() == 2 * ["2500 50"], "a click from before a boot was heard again"
    page.click("#tab-registry")
    field = page.find("[aria-label='data of Version of HKEY_LOCAL_MACHINE\\\\ORVA']")
    field.send_keys(Keys.CONTROL, "a", Keys.NULL, "3.7")
    panel("registry", "write", r"HKLM\Ident", "Name", "Renamed") # while somebody types
    page.wait("the name", lambda: "Renamed" in page.browser.execute_script("return JSON.stringify(state.trees)"))
    page.do(lambda: field.send_keys(Keys.ENTER), "panel registry write --type REG_SZ")
    assert panel("registry", "read", r"HKLM\ORVA", "Version") == "3.7\n"
    panel("off")
    page.wait_for("#notice", "The panel went off")
    shutil.rmtree(PANEL)
    page.wait("no panel and no log", lambda: page.find("#power").text == "gone" and not page.find("#loglines").get_property("children"))
    panel("create", str(PANEL))
    panel("boot", "--factor", "2") # by somebody else
    page.wait_for("#clock", "flowing × 2")
    page.do(lambda: page.click("[data-run=off]"), "panel off")
    page.boot("panel boot --factor 2 --trace")
    page.fill("advance", time="1h")
    page.wait_for("#command", "panel advance 1h")
    view.send_signal(signal.SIGINT)
    page.wait_for("#answer", "connection")
    assert view.wait(PATIENCE) == 0
    check_trace_viewer(page, *viewed)


def check_trace_viewer(page, exported, shown):
    """The parser of Chromium's own trace viewer, the developer tools, finds the threads and calls of the trace."""
    page.browser.get("devtools://devtools/bundled/devtools_app.html")
    threads = page.browser.execute_async_script(READ, exported)
    seen = {(process, int(thread[1:]), name, arguments["call"]): (begin, end, arguments["arguments"], arguments["result"])
            for process, thread, entries, _ in threads for name, begin, end, arguments in entries}
    for (_, begin, end, _), inner in [root for *_, roots in threads for root in roots]:
        assert all(begin <= child[1] and child[2] <= end for child in inner), (begin, inner)
    last = 0
    for call in map(json.loads, shown.splitlines()):
        begin, end, *texts = seen.pop((call["process"], call["thread"], call["function"], call["call"]))
        assert texts == [call["arguments"], call["result"] or "has not returned"], (call, texts)
        assert begin // 1000 == call["time"] - call["took"] and (end > last or not call["returned"]), call
        if call["returned"]: # in the order of the trace, and still in the same millisecond
            assert end // 1000 == call["time"], call
            last = end
    assert not seen and last > 1000 and len(threads) > 2, (seen, last)


def main():
    disk = make_panel()
    view = subprocess.Popen([PROGRAMS / "panel", "-C", PANEL, "view", "--no-open"], stdout=subprocess.PIPE, text=True)
    try:
        host, path = re.search(r"http://(127\.0\.0\.1:\d+)(/.*)", view.stdout.readline()).groups()
        check_refusals(host, path, view.pid)
        page = Page("http://" + host + path)
        try:
            drive(page, disk, view)
        finally:
            page.browser.save_screenshot(str(FOLDER / "last.png"))
            page.browser.quit()
    finally:
        view.kill()
        subprocess.run([PROGRAMS / "panel", "-C", PANEL, "off"], stderr=subprocess.DEVNULL) # after a failure


main()
