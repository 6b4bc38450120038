#!/usr/bin/python3
"""A report in a browser that runs no scripts: its filter, narrow and dark windows.

usage: report_page_test.py RENEWER_DESK [DIR]

The page is drawn into DIR, for the documents.
"""
import pathlib
import subprocess
import sys
import tempfile

from browser import new_browser
from selenium.webdriver.common.by import By

with tempfile.TemporaryDirectory() as work:
    report = pathlib.Path(work, "report.html")
    script = pathlib.Path(work, "install.sh")
    script.write_text("#!/bin/sh\necho no room for the kernel\nexit 3\n")
    subprocess.run(
        [
            sys.argv[1],
            "demo",
            "--plain",
            "--speed",
            "10",
            "--script",
            script,
            "--model",
            "screen",
            "--report",
            report,
        ],
        check=True,
        stdout=subprocess.DEVNULL,
    )
    browser = new_browser(
        900, 1240, "hide-scrollbars", **{"profile.managed_default_content_settings.javascript": 2}
    )
    try:
        browser.get(report.as_uri())

        def shown(selector):
            return [
                one
                for one in browser.find_elements(By.CSS_SELECTOR, selector)
                if one.is_displayed()
            ]

        def check(what, holds):
            if not holds:
                sys.exit(f"{what} does not hold")

        if len(sys.argv) > 2:
            browser.save_screenshot(str(pathlib.Path(sys.argv[2], "report.png")))
        check(
            "the verdict is at the top",
            shown("h1")[0].text == "FAILED" and "script status 3, twice" in shown("header")[0].text,
        )
        check("the script's log is there", "no room for the kernel" in shown("pre")[0].text)
        check(
            "pictures are there in their size",
            all(one.size["width"] >= 294 for one in shown("img")) and len(shown("img")) >= 3,
        )
        for name, kind in [("of-runs", "k-runs"), ("of-prints", "k-prints"), ("of-quiet", "quiet")]:
            check(f"{kind} are shown", shown(f".line > .{kind}"))
            shown(f".{name}")[0].click()
            check(f"{kind} are left out", not shown(f".line .{kind}"))
        check("others stay", shown(".line > .k-desk"))
        ground = shown("body")[0].value_of_css_property("background-color")
        browser.execute_cdp_cmd(
            "Emulation.setEmulatedMedia",
            {"features": [{"name": "prefers-color-scheme", "value": "dark"}]},
        )
        check(
            "it follows a dark colour scheme",
            shown("body")[0].value_of_css_property("background-color") != ground,
        )
        browser.execute_cdp_cmd(
            "Emulation.setDeviceMetricsOverride",
            {"width": 360, "height": 800, "deviceScaleFactor": 1, "mobile": False},
        )
        check(
            "it fits a narrow window",
            browser.execute_script("return document.documentElement.scrollWidth") <= 360,
        )
    finally:
        browser.quit()
