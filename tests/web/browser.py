#!/usr/bin/python3
"""A real browser for the web panel's tests: headless Chromium under chromedriver, driven one
command at a time. Each line on stdin is a JSON object {"op": ..., ...}; each answer is one JSON
line on stdout, {"ok": true, "value": ...} or {"ok": false, "error": "..."}. Ops: open (url),
size (w, h), click (css), keys (css, keys: list of key names or text), press (keys, to
whatever has the focus), text (css), attr (css,
name), js (script, returns its value), wait (css, ms: visible within), shot (path), log (the
console entries since the last call), quit."""

import json
import sys

from selenium import webdriver
from selenium.common.exceptions import WebDriverException
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support import expected_conditions as shown
from selenium.webdriver.support.ui import WebDriverWait


def start(language):
    options = webdriver.ChromeOptions()
    for argument in ("--headless=new", "--no-sandbox", "--disable-dev-shm-usage",
                     "--disable-gpu", "--no-first-run", "--disable-extensions",
                     "--lang=" + language, "--window-size=1280,900"):
        options.add_argument(argument)
    options.add_experimental_option("prefs", {"intl.accept_languages": language})
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


def key(name):
    return getattr(Keys, name) if hasattr(Keys, name) else name


def run(driver, command):
    op = command["op"]
    find = lambda: driver.find_element(By.CSS_SELECTOR, command["css"])
    if op == "open":
        driver.get(command["url"])
    elif op == "size":
        driver.set_window_size(command["w"], command["h"])
        # The viewport, not the window, is what the page lays out in.
        inner = driver.execute_script("return [window.innerWidth, window.innerHeight]")
        driver.set_window_size(2 * command["w"] - inner[0], 2 * command["h"] - inner[1])
    elif op == "click":
        element = find()
        driver.execute_script("arguments[0].scrollIntoView({block: 'center'})", element)
        element.click()
    elif op == "keys":
        element = find()
        element.send_keys(*[key(k) for k in command["keys"]])
    elif op == "press":
        ActionChains(driver).send_keys(*[key(k) for k in command["keys"]]).perform()
    elif op == "text":
        return find().text
    elif op == "attr":
        return find().get_attribute(command["name"])
    elif op == "js":
        return driver.execute_script(command["script"])
    elif op == "wait":
        WebDriverWait(driver, command.get("ms", 5000) / 1000).until(
            shown.visibility_of_element_located((By.CSS_SELECTOR, command["css"])))
    elif op == "shot":
        return driver.save_screenshot(command["path"])
    elif op == "log":
        return [{"level": e["level"], "message": e["message"]} for e in driver.get_log("browser")]
    else:
        raise ValueError("unknown op " + op)
    return None


def main():
    language = sys.argv[1] if len(sys.argv) > 1 else "en-US"
    try:
        driver = start(language)
    except WebDriverException as error:
        print(json.dumps({"ok": False, "error": str(error).splitlines()[0]}), flush=True)
        return 1
    print(json.dumps({"ok": True, "value": driver.capabilities.get("browserVersion")}),
          flush=True)
    try:
        for line in sys.stdin:
            command = json.loads(line)
            if command.get("op") == "quit":
                break
            try:
                answer = {"ok": True, "value": run(driver, command)}
            except Exception as error:  # the test reads why and fails there
                text = str(error).strip().splitlines()
                answer = {"ok": False, "error": type(error).__name__ + ": " +
                          (text[0] if text else "")}
            print(json.dumps(answer), flush=True)
    finally:
        driver.quit()
    return 0


if __name__ == "__main__":
    sys.exit(main())
