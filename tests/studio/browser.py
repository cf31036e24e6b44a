"""The studio's page in a browser, and what a user does there."""

import base64
import json
import os
import pathlib
import shutil
import time

from studio import BUILD, Studio, skip

try:
    from selenium import webdriver
    from selenium.webdriver.chrome.service import Service
    from selenium.webdriver.common.action_chains import ActionChains
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
except ImportError:
    skip("python3-selenium is not installed")
CHROMIUM, DRIVER = shutil.which("chromium"), shutil.which("chromedriver")
if not CHROMIUM or not DRIVER:
    skip("chromium and chromium-driver are not installed")

SHOTS = pathlib.Path(os.environ.get("ZOL_STUDIO_SHOTS", BUILD / "studio"))
PATIENCE = 20  # seconds

# Whether the picture or the waveform of the values that are now is on the page.
SETTLED = """
const [done] = arguments;
import("/state.js").then(({ store, wire, isSound }) => {
  const view = document.querySelector(isSound() ? "sound-view" : "picture-view");
  if (isSound()) return done(view.asked === JSON.stringify(wire()) && Boolean(view.told.textContent || !view.message.hidden));
  const { stages } = wire();
  done(view.pictures.idle && view.dataset.shown === JSON.stringify([stages, store.doc.frame]));
});"""

PIXELS = """
const canvas = document.querySelector(arguments[0]);
const data = canvas.getContext("2d", { willReadFrequently: true }).getImageData(0, 0, canvas.width, canvas.height).data;
let text = "";
for (let i = 0; i < data.length; i += 32768) text += String.fromCharCode(...data.subarray(i, i + 32768));
return [canvas.width, canvas.height, btoa(text)];"""

# Texts that stand out too little from what is behind them, and controls without a name.
FAULTS = """
const numbers = (text) => { const n = text.match(/[\\d.]+/g).map(Number); return n.length < 4 ? [...n, 1] : n; };
const light = (rgb) => rgb.slice(0, 3).map((c) => c / 255).map((c) => (c <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4))
  .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
const behind = (element) => {
  for (; element; element = element.parentElement) {
    const colour = numbers(getComputedStyle(element).backgroundColor);
    if (colour[3] === 1) return colour;
  }
  return [255, 255, 255];
};
const faults = [];
for (const element of document.querySelectorAll("body *")) {
  if (!element.checkVisibility?.({ opacityProperty: true, visibilityProperty: true }) || element.closest("canvas, svg, :disabled, [hidden]")) continue;
  const style = getComputedStyle(element);
  const own = [...element.childNodes].some((node) => node.nodeType === 3 && node.data.trim()) || element.matches("input[type=text], select, textarea");
  if (own && style.opacity === "1") {
    const [a, b] = [light(numbers(style.color)), light(behind(element))].sort((x, y) => y - x);
    const contrast = (a + 0.05) / (b + 0.05);
    if (contrast < 4.5) faults.push(`${element.tagName} "${element.textContent.slice(0, 30)}" ${contrast.toFixed(2)}`);
  }
  if (element.matches("input, select, textarea, button, [role=slider]") && element.type !== "hidden") {
    const name = element.getAttribute("aria-label") || element.labels?.[0]?.textContent || element.textContent || element.title;
    if (!name?.trim()) faults.push(`no name: ${element.outerHTML.slice(0, 80)}`);
  }
}
return faults;"""


def browser(dark=True, size=(1500, 1000)):
    options = webdriver.ChromeOptions()
    options.binary_location = CHROMIUM
    words = ["--headless=new", "--window-size={},{}".format(*size), "--hide-scrollbars", "--force-device-scale-factor=1", "--autoplay-policy=no-user-gesture-required"]
    for word in words + (["--no-sandbox"] if os.geteuid() == 0 else []) + (["--force-dark-mode"] if dark else []):
        options.add_argument(word)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    driver = webdriver.Chrome(service=Service(DRIVER), options=options)
    driver.set_script_timeout(PATIENCE)
    driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": "dark" if dark else "light"}]})
    return driver


class Page:
    """A browser that looks at a studio of its own."""

    def __init__(self, **options):
        SHOTS.mkdir(parents=True, exist_ok=True)
        self.studio = Studio()
        self.driver = browser(**options)

    def close(self):
        self.driver.quit()
        self.studio.close()

    def open(self, document=None):
        fragment = "" if document is None else "#" + base64.urlsafe_b64encode(json.dumps(document).encode()).decode().rstrip("=")
        self.driver.get("about:blank")
        self.driver.get(self.studio.address + fragment)
        self.until(lambda: self.driver.execute_script("return document.body.dataset.ready === ''"))

    def until(self, holds, why=""):
        end = time.monotonic() + PATIENCE
        while not holds():
            assert time.monotonic() < end, (why() if callable(why) else why) or "it did not come"
            time.sleep(0.05)

    def settle(self):
        self.until(lambda: self.driver.execute_async_script(SETTLED), lambda: self.message())

    def message(self):
        return self.driver.execute_script("return [...document.querySelectorAll('.message')].filter((m) => m.checkVisibility()).map((m) => m.textContent).join()")

    def shot(self, name):
        self.driver.save_screenshot(str(SHOTS / f"{name}.png"))
        faults = self.driver.execute_script(FAULTS)
        assert not faults, (name, faults)

    def find(self, css):
        return self.driver.find_element(By.CSS_SELECTOR, css)

    def all(self, css):
        return self.driver.find_elements(By.CSS_SELECTOR, css)

    def add(self, name):
        search = self.find("effect-browser input")
        search.clear()
        search.send_keys(name, Keys.ENTER)

    def field(self, name, css="input.entry"):
        return self.find(f'[data-field="{name}"] {css}')

    def set(self, name, value):
        entry = self.field(name)
        entry.send_keys(Keys.CONTROL, "a")
        entry.send_keys(str(value), Keys.ENTER)

    def choose(self, select, value):
        self.driver.execute_script("arguments[0].value = arguments[1]; arguments[0].dispatchEvent(new Event('change', {bubbles: true}))", select, value)

    def values(self, stage=0):
        return self.driver.execute_async_script("import('/state.js').then(({store}) => arguments[1](store.doc.stages[arguments[0]].values))", stage)

    def frame(self, number):
        self.driver.execute_script("const bar = document.querySelector('time-bar'); bar.go(arguments[0])", number)

    def pixels(self, css=".after"):
        width, height, data = self.driver.execute_script(PIXELS, css)
        return (width, height), base64.b64decode(data)

    def rendered(self, *words, frame=0):
        return self.studio.rendered(*words, "--duration", "5", "--frames", f"{frame}-{frame}")

    def drop(self, name, data):
        self.driver.execute_script("""
            const bytes = Uint8Array.from(atob(arguments[1]), (c) => c.charCodeAt(0));
            const transfer = new DataTransfer();
            transfer.items.add(new File([bytes], arguments[0]));
            document.body.dispatchEvent(new DragEvent("drop", { dataTransfer: transfer, bubbles: true, cancelable: true }));""", name, base64.b64encode(data).decode())
