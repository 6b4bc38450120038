#!/usr/bin/python3
"""The front panel's page in a browser, in use.

usage: panel_page_test.py RENEWER_DESK RENEWER_PACK PROMPTS [DIR]

PROMPTS holds the prompt pictures of the unit. The page is drawn into DIR, for the documents, as it
stands when the unit asks.
"""
import base64
import http.client
import io
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import time
import urllib.parse

from PIL import Image
from browser import new_browser
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

SPEED = 10  # of the unit's clock
PATIENCE = 30  # seconds
SCRIPT = "#!/bin/sh\necho writing\nsleep 4\n"

# What is done and what is to be seen, a step a word or two; see `Page`.
UPDATE = [
    "see asked",
    "click ok",
    "see updating",
    "wait acknowledge",
    "click acknowledge",
    "status UPDATED",
    "story unitreboot",
]
STORIES = [
    (
        "led",
        "a whole update",
        ["status The unit is ready", "click start", "lamp Light_Static_Data", *UPDATE],
    ),
    (
        "led",
        "a long press",
        [
            "click start",
            "see asked",
            "hold right 0.33",
            r"story right_button is pressed:([3-9]|\d\d)s",
            "story poweroff button press one time 2 second",
            "see updating",
        ],
    ),
    ("led", "a decline", ["click start", "see asked", "twice right", "status DECLINED"]),
    (
        "led",
        "a key of the keyboard",
        [
            "click start",
            "see asked",
            "down p",
            "held right",
            "wait_s 0.15",
            "up p",
            "story right_button is pressed:",
        ],
    ),
    (
        "led",
        "power cut, and back",
        [
            "click start",
            "see asked",
            "click ok",
            "see updating",
            "click cut",
            "status The power was cut while",
            "dark",
            "wait resume",
            "click resume",
            *UPDATE,
        ],
    ),
    (
        "screen",
        "a whole update",
        [
            "black",
            "click start",
            "see asked",
            "picture confirm.bmp",
            *UPDATE,
            "picture success.bmp",
        ],
    ),
    (
        "screen",
        "a whole update by keyboard",
        [
            "focus start",
            "key ENTER",
            "see asked",
            "key ENTER",
            "see updating",
            "wait acknowledge",
            "focus acknowledge",
            "key ENTER",
            "status UPDATED",
        ],
    ),
    ("screen", "a decline", ["click start", "see asked", "key ESCAPE", "status DECLINED"]),
    (
        "screen",
        "no power",
        [
            "set battery 6.4",
            "set external 0",
            "click start",
            "wait acknowledge",
            "click acknowledge",
            "status REFUSED (battery",
        ],
    ),
    (
        "screen",
        "supplies while it runs",
        [
            "set battery 8.2",
            "click start",
            "see asked",
            "set external 12",
            "story deskexternal 12 V",
        ],
    ),
    (
        "screen",
        "another package",
        [
            "package update_b20240523.bin",
            "see asked",
            "package broken",
            "status REFUSED (package",
            "package update_b20240523.bin",
            "see asked",
        ],
    ),
    ("oled", "the example", ["click start", "glow"]),
]


class Page:
    """A window of the browser with the page in it."""

    def __init__(self, browser, files, prompts):
        self.browser, self.files, self.prompts = browser, files, prompts

    def do(self, step):
        word, _, rest = step.partition(" ")
        getattr(self, word)(*(rest.split(" ") if word in ("hold", "set") else [rest]))

    def at(self, name):
        return self.browser.find_element(By.CSS_SELECTOR, f"#{name}, [data-key={name}]")

    def text(self, name):
        return self.browser.execute_script("return arguments[0].textContent", self.at(name))

    def until(self, what, seen):
        end = time.monotonic() + PATIENCE
        while not seen():
            assert time.monotonic() < end, f"{what}; status: {self.text('status')}"
            time.sleep(0.05)

    def forget(self):
        """Marks what the story holds now as of an earlier run."""
        self.browser.execute_script(
            "for (const line of arguments[0].children) line.classList.add('earlier')",
            self.at("events"),
        )

    def click(self, name):
        self.at(name).click()

    def hold(self, name, seconds):
        ActionChains(self.browser, duration=0).click_and_hold(self.at(name)).pause(
            float(seconds)
        ).release().perform()

    def twice(self, name):
        ActionChains(self.browser, duration=0).click(self.at(name)).click().perform()

    def down(self, key):
        ActionChains(self.browser).key_down(key).perform()

    def up(self, key):
        ActionChains(self.browser).key_up(key).perform()

    def key(self, name):
        ActionChains(self.browser).send_keys(getattr(Keys, name)).perform()

    def focus(self, name):
        self.browser.execute_script("arguments[0].focus()", self.at(name))

    def set(self, name, value):
        self.browser.execute_script(
            "arguments[0].value = arguments[1]; arguments[0].dispatchEvent(new Event('change'))",
            self.at(name),
            value,
        )

    def package(self, name):
        self.at("package").send_keys(str(self.files / name))

    def trouble(self, text):
        self.until(text, lambda: self.text("trouble").startswith(text))

    def status(self, text):
        self.until(text, lambda: self.text("status").startswith(text))

    def see(self, stage):
        words = {"asked": "OK confirms", "updating": "update coming|updating111"}[stage]
        place = "status" if stage == "asked" else "events"
        earlier = (By.CSS_SELECTOR, "#events .earlier")
        self.until("a new story", lambda: not self.browser.find_elements(*earlier))
        self.until(stage, lambda: re.search(words, self.text(place)))

    def wait(self, name):
        self.until(name, self.at(name).is_enabled)

    def wait_s(self, seconds):
        time.sleep(float(seconds))

    def story(self, text):
        self.until(text, lambda: re.search(text, self.text("events")))

    def held(self, name):
        self.until(f"{name} held", lambda: "held" in self.at(name).get_attribute("class"))

    def lamp(self, name):
        self.until(name, lambda: self.at(name).get_attribute("class").endswith(" on"))

    def dark(self, _):
        self.until("dark", lambda: not self.browser.find_elements(By.CSS_SELECTOR, "#lamps .on"))

    def pixels(self):
        """What the screen shows, in the colours that the LCD has."""
        url = self.browser.execute_script("return document.querySelector('canvas').toDataURL()")
        return lcd_colours(Image.open(io.BytesIO(base64.b64decode(url.partition(",")[2]))))

    def black(self, _):
        self.until("black", lambda: not any(self.pixels()))

    def glow(self, _):
        self.until("glow", lambda: any(self.pixels()))

    def picture(self, name):
        wanted = lcd_colours(Image.open(self.prompts / name))
        self.until(name, lambda: self.pixels() == wanted)


def lcd_colours(image):
    return image.convert("RGB").point([i & 0xF8 for i in range(256)] * 3).tobytes()


class Desk:
    """The command that serves the page."""

    def __init__(self, command):
        self.process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        self.address = next(
            word
            for line in self.process.stdout
            for word in line.split()
            if word.startswith("http://")
        )

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()

    def ask(self, path, method="GET", **headers):
        place = urllib.parse.urlsplit(self.address)
        connection = http.client.HTTPConnection(place.netloc)
        connection.request(
            method,
            path.replace("TOKEN/", place.path.lstrip("/")),
            headers={name: value.replace("HERE", place.netloc) for name, value in headers.items()},
        )
        return connection.getresponse().status

    def end(self):
        self.process.send_signal(signal.SIGINT)
        return self.process.wait(PATIENCE)


REQUESTS = [  # path, method, headers, status
    ("/TOKEN/", "GET", {}, 200),
    ("/TOKEN/", "GET", {"Host": "example.org"}, 403),
    ("/TOKEN/cut", "POST", {"Origin": "http://example.org"}, 403),
    ("/TOKEN/cut", "POST", {"Origin": "http://HERE"}, 409),
    ("/TOKEN/press?value=ok", "POST", {}, 409),
    ("/TOKEN/battery?value=1e9", "POST", {}, 409),
    ("/TOKEN/battery?value=", "POST", {}, 409),
    ("/TOKEN/usb?value=../x", "POST", {}, 409),
    ("/TOKEN/start", "GET", {}, 404),
    ("/", "GET", {}, 404),
    ("/0123456789abcdef0123456789abcdef/", "GET", {}, 404),
    ("/TOKEN/../../etc/passwd", "GET", {}, 404),
]


def make_package(pack, file, model, script):
    script_file = file.with_suffix(".sh")
    script_file.write_text(script)
    subprocess.run(
        [
            pack,
            "create",
            "-o",
            file,
            "--version",
            "1.1.4.0",
            "--pn",
            f"10{model}563400120000",
            "--revision",
            "1a2b3c4d",
            f"install={script_file}",
        ],
        check=True,
        stdout=subprocess.DEVNULL,
    )


def two_windows(page, desk):
    """What one window does the other one sees, also when it comes later."""
    browser, first = page.browser, page.browser.current_window_handle
    browser.switch_to.new_window("window")
    browser.get(desk.address)
    second = browser.current_window_handle
    for step in ["click start", "see asked", "click ok"]:
        page.do(step)
    browser.switch_to.window(first)
    for step in ["see updating", "wait acknowledge", "click acknowledge"]:
        page.do(step)
    browser.switch_to.window(second)
    page.do("status UPDATED")
    browser.close()
    browser.switch_to.window(first)


def draw(model, desk, page, directory):
    page.browser.get(desk.address)
    shown = "lamp Light_Gps" if model == "led" else "picture confirm.bmp"
    for step in ["click start", "see asked", shown]:
        page.do(step)
    directory.mkdir(parents=True, exist_ok=True)
    drawn = Image.open(io.BytesIO(page.browser.get_screenshot_as_png()))
    drawn.convert("RGB").quantize(128).save(directory / f"panel-{model}.png", optimize=True)


def check_model(model, browser, panel, pack, prompts, files, pictures):
    make_package(pack, files / "update_b20240523.bin", "16" if model == "screen" else "13", SCRIPT)
    (files / "broken").write_bytes((files / "update_b20240523.bin").read_bytes()[:-1])
    package = [] if model == "oled" else [files / "update_b20240523.bin"]
    command = [panel, "panel", *package, "--model", model, "--speed"]
    page = Page(browser, files, prompts)
    with Desk([*command, str(SPEED)]) as desk:
        use(model, desk, page)
    if pictures and model != "oled":
        with Desk([*command, "1"]) as desk:
            draw(model, desk, page, pictures)


def use(model, desk, page):
    browser = page.browser
    browser.get_log("browser")  # up to here it is of an earlier desk's page
    browser.get(desk.address)
    for name, steps in [(name, steps) for of, name, steps in STORIES if of == model]:
        began = time.monotonic()
        page.forget()
        for step in steps:
            try:
                page.do(step)
            except AssertionError as error:
                sys.exit(f"{model}, {name}: {step}: {error}")
        print(f"{model}: {name}: {time.monotonic() - began:.1f} s", flush=True)
    if model == "led":
        two_windows(page, desk)
        for path, method, headers, status in REQUESTS:
            answered = desk.ask(path, method, **headers)
            assert answered == status, (path, method, headers, answered)
    assert page.text("trouble") == "", page.text("trouble")
    log = [line for line in browser.get_log("browser") if line["level"] == "SEVERE"]
    assert not log, log
    loaded = browser.execute_script(
        "return performance.getEntriesByType('resource').map((one) => one.name)"
    )
    assert loaded and all(one.startswith(desk.address) for one in loaded), loaded
    assert desk.end() == 130
    page.do("trouble The desk is gone")


def main(panel, pack, prompts, pictures=None):
    browser = new_browser(1280, 900)
    try:
        for model in ("led", "screen", "oled"):
            with tempfile.TemporaryDirectory() as work:
                check_model(
                    model,
                    browser,
                    panel,
                    pack,
                    pathlib.Path(prompts),
                    pathlib.Path(work),
                    pictures and pathlib.Path(pictures),
                )
    finally:
        browser.quit()


main(*sys.argv[1:])
