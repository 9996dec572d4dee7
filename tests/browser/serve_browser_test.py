#!/usr/bin/env python3
"""velto-settings serve in a real browser: headless Chromium loads the page, clicks the master
switch and a link row on the device's screen, and sees the page and the settings file change;
then a settings file is edited beside it and the page redraws by itself.

serve_browser_test.py VELTO_SETTINGS [BROWSER_PICTURE.png]
Exit status 77 (skipped) when Chromium, its driver or Selenium is not installed."""

import os
import shutil
import signal
import subprocess
import sys
import tempfile

SKIP = 77
WAIT = 20  # seconds for anything the page must show


def skip(why):
    print("skipped: " + why)
    sys.exit(SKIP)


try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.action_chains import ActionChains
    from selenium.webdriver.support.ui import WebDriverWait
except ImportError:
    skip("python3-selenium is not installed")

BROWSER = shutil.which("chromium") or shutil.which("chromium-browser")
DRIVER = shutil.which("chromedriver")
if not BROWSER or not DRIVER:
    skip("chromium and chromium-driver are not installed")

PROGRAM = sys.argv[1]
PICTURE = sys.argv[2] if len(sys.argv) > 2 else None


def program(*arguments):
    return subprocess.run([PROGRAM, *arguments], check=True, capture_output=True, text=True).stdout


def main(scratch):
    device = os.path.join(scratch, "device")
    program("device", "init", device, "--demo")
    server = subprocess.Popen([PROGRAM, "--device", device, "serve", "--port", "0"],
                              stdout=subprocess.PIPE, text=True)
    driver = None
    try:
        url = server.stdout.readline().strip()
        assert url.startswith("http://127.0.0.1:"), url
        options = webdriver.ChromeOptions()
        options.binary_location = BROWSER
        for argument in ["--headless=new", "--window-size=1280,960", "--disable-gpu",
                         "--disable-dev-shm-usage", "--no-first-run", "--disable-extensions",
                         "--user-data-dir=" + os.path.join(scratch, "profile")]:
            options.add_argument(argument)
        if os.geteuid() == 0:
            options.add_argument("--no-sandbox")  # Chromium's sandbox refuses to run as root
        driver = webdriver.Chrome(service=Service(DRIVER), options=options)
        driver.set_page_load_timeout(WAIT)
        wait = WebDriverWait(driver, WAIT)
        driver.get(url)

        def shown(script):
            return wait.until(lambda d: d.execute_script(script))

        def journal():
            return driver.find_element("id", "journal").text

        def tap(row_name):
            """Clicks the middle of a row where the page's record says it is drawn."""
            frame = driver.execute_script(
                "return page.rows.find(r => r.label === arguments[0]).frame", row_name)
            screen = driver.find_element("id", "screen")
            scale = screen.size["width"] / driver.execute_script("return size.width")
            x = (frame[0] + frame[2] / 2) * scale - screen.size["width"] / 2
            y = (frame[1] + frame[3] / 2) * scale - screen.size["height"] / 2
            ActionChains(driver).move_to_element_with_offset(screen, round(x), round(y)).click() \
                .perform()

        shown("return document.body.dataset.page === 'VeltoSettingsController' && size !== null"
              " && document.getElementById('screen').naturalWidth > 0")

        tap("Enabled")
        shown("return page.rows.find(r => r.label === 'Enabled').value === false")
        wait.until(lambda d: "write com.norvale.velto VeltoEnabled = false" in journal())
        # The demo device starts with Velto on: the switch wrote the settings file.
        assert program("--device", device, "defaults", "read", "com.norvale.velto",
                       "VeltoEnabled").strip() == "0"

        tap("About")
        shown("return document.body.dataset.page === 'VeltoMiscController'")
        assert "push VeltoMiscController" in journal(), journal()
        pictures = driver.execute_script("return pictures")

        # Edited beside the browser, as a developer edits a plist in another window.
        program("--device", device, "defaults", "write", "com.norvale.velto",
                "VeltoEnableLogging", "-bool", "true")
        shown("return page.rows.find(r => r.id === 'VeltoEnableLogging').value === true")
        wait.until(lambda d: "changed: /var/mobile/Library/Preferences/" in journal())
        assert driver.execute_script("return pictures") > pictures, "the screen was not redrawn"
        shown("return document.getElementById('screen').complete")
        if PICTURE:
            driver.save_screenshot(PICTURE)

        # The page's requests were all its own: nothing it sent was refused.
        assert driver.find_element("id", "status").text == "", \
            driver.find_element("id", "status").text
    finally:
        if driver:
            driver.quit()
        server.send_signal(signal.SIGINT)
        status = server.wait(timeout=WAIT)
    assert status == 0, "serve ended with status %d" % status


if __name__ == "__main__":
    with tempfile.TemporaryDirectory(prefix="velto-browser-") as folder:
        main(folder)
    print("ok")
