#!/usr/bin/python3
"""The studio's page in a browser. A picture of every state goes to the build folder."""

import base64
import json
import os
import pathlib
import shutil
import subprocess
import time
import unittest

from studio import BUILD, ZOL, Studio, skip

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
PATIENCE = 8  # seconds

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


def browser(dark=True):
    options = webdriver.ChromeOptions()
    options.binary_location = CHROMIUM
    words = ["--headless=new", "--window-size=1500,1000", "--hide-scrollbars", "--force-device-scale-factor=1", "--autoplay-policy=no-user-gesture-required"]
    for word in words + (["--no-sandbox"] if os.geteuid() == 0 else []) + (["--force-dark-mode"] if dark else []):
        options.add_argument(word)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    driver = webdriver.Chrome(service=Service(DRIVER), options=options)
    driver.set_script_timeout(PATIENCE)
    driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": "dark" if dark else "light"}]})
    return driver


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        SHOTS.mkdir(parents=True, exist_ok=True)
        cls.studio = Studio()
        cls.driver = browser()

    @classmethod
    def tearDownClass(cls):
        cls.driver.quit()
        cls.studio.close()

    def setUp(self):
        self.expected_complaints = ()
        self.open()

    def tearDown(self):
        for entry in self.driver.get_log("browser"):
            known = any(word in entry["message"] for word in self.expected_complaints)
            self.assertTrue(known, entry["message"])

    # ---- What a user does ----

    def open(self, document=None):
        fragment = "" if document is None else "#" + base64.urlsafe_b64encode(json.dumps(document).encode()).decode().rstrip("=")
        self.driver.get("about:blank")
        self.driver.get(self.studio.address + fragment)
        self.until(lambda: self.driver.execute_script("return document.body.dataset.ready === ''"))

    def until(self, holds, why=""):
        end = time.monotonic() + PATIENCE
        while not holds():
            self.assertLess(time.monotonic(), end, why or "it did not come")
            time.sleep(0.05)

    def settle(self):
        self.until(lambda: self.driver.execute_async_script(SETTLED), lambda: self.message())

    def message(self):
        return self.driver.execute_script("return [...document.querySelectorAll('.message')].filter((m) => m.checkVisibility()).map((m) => m.textContent).join()")

    def shot(self, name):
        self.driver.save_screenshot(str(SHOTS / f"{name}.png"))
        self.assertEqual(self.driver.execute_script(FAULTS), [], name)

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


class Pictures(Page):
    def test_a_dragged_slider_shows_what_the_command_renders(self):
        self.settle()
        self.shot("start")
        self.add("blur")
        self.settle()
        slider = self.field("Blurriness", "input[type=range]")
        drag = ActionChains(self.driver, duration=10).click_and_hold(slider)
        for _ in range(12):
            drag.move_by_offset(3, 0)
        drag.release().perform()
        self.settle()
        value = self.values()["Blurriness"]
        self.assertGreater(float(value), 0.5)
        size, pixels = self.pixels()
        self.assertEqual(size, (640, 427))
        self.assertEqual(pixels, self.rendered("blur", "-i", "photo.jpg", "--set", f"Blurriness={value}"))
        self.find("#undo").click()  # the drag is one step
        self.assertEqual(self.values(), {})
        self.find("#redo").click()
        self.assertEqual(self.values(), {"Blurriness": value})
        self.set("Blurriness", "1.25")  # beyond the range, where only its lower end is a limit
        self.assertEqual(self.values()["Blurriness"], "1.25")
        self.set("Blurriness", "-1")
        self.assertEqual(self.values()["Blurriness"], "0")
        ActionChains(self.driver).double_click(self.find('[data-field="Blurriness"] .name')).perform()
        self.assertEqual(self.values(), {})
        self.settle()
        self.shot("blur")

    def test_effects_of_each_family_render(self):
        families = self.driver.execute_async_script(
            "import('/state.js').then(({effects}) => { const all = {}; for (const e of effects) if (e.renders) (all[e.family] ??= []).push(e.name); arguments[0](all); })")
        self.assertGreater(len(families), 5)
        for family, names in families.items():
            for name in names:
                with self.subTest(name):
                    sound = "udio" in name
                    self.open({"source": "a.wav" if sound else "photo.jpg", "duration": None if sound else 5, "stages": []})
                    self.driver.execute_async_script("const [name, done] = arguments; Promise.all([import('/state.js'), import('/effects.js')]).then(([s, e]) => { e.addEffect(s.effectNamed(name)); done(); })", name)
                    for select in self.all(".dialog .input select"):
                        self.choose(select, "b.wav" if sound else "clip.mp4")
                    self.until(lambda: self.driver.execute_async_script(SETTLED) or self.message(), name)
                    if name == names[0]:
                        self.shot("family-" + family.lower().replace(" / ", "-").replace(" ", "-"))
                    self.assertNotIn("no file", self.message())

    def test_chains_are_ordered_and_switched(self):
        for name in ["blur", "recolor", "spread"]:
            self.add(name)
        self.settle()
        names = lambda: [button.text.strip("0123456789 \n") for button in self.all(".chain .stage")]
        first = names()
        self.assertEqual(first[0], "Blur")
        stages = self.all(".chain .stage")
        stages[0].send_keys(Keys.ALT, Keys.ARROW_DOWN)
        self.assertEqual(names(), [first[1], first[0], first[2]])
        self.shot("chain")
        for place in (2, 0):
            self.all(".chain input")[place].click()
        self.settle()
        self.assertEqual(self.pixels()[1], self.rendered("blur", "-i", "photo.jpg"))
        self.all(".chain li")[1].find_element(By.CSS_SELECTOR, "[aria-label^=Remove]").click()
        self.assertEqual(len(names()), 2)

    def test_keyframes_change_the_picture_over_time(self):
        self.add("blur")
        self.frame(0)
        self.set("Blurriness", "0")
        self.field("Blurriness", ".key").click()
        self.frame(100)
        self.settle()
        self.set("Blurriness", "0.4")
        self.frame(62)
        self.settle()
        text = self.values()["Blurriness"]
        self.assertRegex(text, r"^0=0;0\.8=0\.4;1=0$")
        self.assertEqual(self.pixels()[1], self.rendered("blur", "-i", "photo.jpg", "--set", f"Blurriness={text}", frame=62))
        marks = self.all(".key-mark")
        self.assertGreaterEqual(len(marks), 2)
        self.driver.execute_script("arguments[0].focus()", marks[0])
        marks[0].send_keys("c")
        self.assertIn("0~=0", self.values()["Blurriness"])
        self.settle()
        self.assertEqual(self.field("Blurriness").get_attribute("value"), self.driver.execute_async_script(
            "import('/curves.js').then((c) => arguments[1](String(Number(Number(c.textAt(c.parse(arguments[0]), 62 / 125)).toPrecision(5)))))", self.values()["Blurriness"]))
        self.assertEqual(self.pixels()[1], self.rendered("blur", "-i", "photo.jpg", "--set", f"Blurriness={self.values()['Blurriness']}", frame=62))
        mark = self.all(".key-mark")[1]
        ActionChains(self.driver, duration=50).drag_and_drop_by_offset(mark, -200, 0).perform()
        self.assertNotIn("0.8=", self.values()["Blurriness"])
        self.shot("keyframes")

    def test_shapes_are_drawn_on_the_picture(self):
        self.add("fill geometry")
        self.until(lambda: self.message())
        pen = lambda tool: next(button for button in self.all(".drawbar button") if button.text == tool).click()
        svg = self.find(".shapes")
        pen("Ellipse")
        ActionChains(self.driver, duration=50).move_to_element_with_offset(svg, -160, -100).click_and_hold().move_by_offset(150, 150).release().perform()
        self.settle()
        path = self.values()["Geometry"]
        self.assertRegex(path, r"^M[\d.]+ [\d.]+ C.* Z$")
        self.assertEqual(self.pixels()[1], self.rendered("fill geometry", "-i", "photo.jpg", "--set", f"Geometry={path}"))
        node = self.all(".node")[0]
        ActionChains(self.driver, duration=50).drag_and_drop_by_offset(node, 40, 0).perform()
        self.settle()
        self.assertNotEqual(self.values()["Geometry"], path)
        pen("Pen")
        corners = ActionChains(self.driver, duration=50).move_to_element_with_offset(svg, 60, 60)
        for x, y in [(0, 0), (120, 0), (-40, 90)]:
            corners.move_by_offset(x, y).click()
        corners.send_keys(Keys.ENTER).perform()
        self.settle()
        path = self.values()["Geometry"]
        self.assertEqual(path.count("M"), 2)
        self.assertEqual(self.pixels()[1], self.rendered("fill geometry", "-i", "photo.jpg", "--set", f"Geometry={path}"))
        self.shot("geometry")
        text = self.field("Geometry", "textarea")
        text.clear()
        text.send_keys("M100 60C130 20 200 60 100 160 0 60 70 20 100 60Z", Keys.TAB)
        self.settle()
        self.assertEqual(len(self.all(".node")), 3 - 1)

    def test_views_compare_and_zoom(self):
        self.add("recolor" if self.driver.execute_async_script("import('/state.js').then(({effectNamed}) => arguments[0](Boolean(effectNamed('Filters/Color/Recolor')?.renders)))") else "blur")
        self.settle()
        self.find(".view-split").click()
        self.settle()
        self.until(lambda: self.find(".before").is_displayed() and self.pixels(".before")[0] == (640, 427))
        self.assertEqual(self.pixels(".before")[1], self.rendered("copy", "-i", "photo.jpg"))
        self.shot("split")
        for _ in range(6):
            self.find(".view-in").click()
        self.settle()
        self.assertEqual(self.pixels()[0], (640, 427))
        middle = "const box = document.querySelector(arguments[0]).getBoundingClientRect(); return [box.x + box.width / 2, box.y + box.height / 2].map(Math.round)"
        self.assertEqual(self.driver.execute_script(middle, ".sheet"), self.driver.execute_script(middle, ".desk"))
        ActionChains(self.driver, duration=50).move_to_element_with_offset(self.find(".desk"), 100, 100).click_and_hold().move_by_offset(30, -20).release().perform()
        moved = self.driver.execute_script(middle, ".sheet")
        self.assertEqual([a - b for a, b in zip(moved, self.driver.execute_script(middle, ".desk"))], [30, -20])
        self.shot("zoom")
        self.find(".view-fit").click()

    def test_a_keyer_takes_a_colour_from_the_picture_over_a_chequerboard(self):
        self.add("color keyer")
        self.choose(self.field("Background", "select"), "clip.mp4")
        self.settle()
        name = self.find(".field.color").get_attribute("data-field")
        self.field(name, "button[aria-label^=Pick]").click()
        ActionChains(self.driver).move_to_element_with_offset(self.find(".sheet"), -150, -150).click().perform()
        self.until(lambda: name in self.values())
        self.settle()
        self.assertRegex(self.values()[name], r"^#[0-9a-f]{8}$")
        self.shot("keyer")

    def test_reload_keeps_everything(self):
        self.add("blur")
        self.set("Blurriness", "0.3")
        self.frame(10)
        self.settle()
        time.sleep(0.4)
        before = self.pixels()
        self.driver.refresh()
        self.until(lambda: self.driver.execute_script("return document.body.dataset.ready === ''"))
        self.settle()
        self.assertEqual(self.values(), {"Blurriness": "0.3"})
        self.assertEqual(self.pixels(), before)
        self.assertNotIn("token", self.driver.current_url)

    def drop(self, name, data):
        self.driver.execute_script("""
            const bytes = Uint8Array.from(atob(arguments[1]), (c) => c.charCodeAt(0));
            const transfer = new DataTransfer();
            transfer.items.add(new File([bytes], arguments[0]));
            document.body.dispatchEvent(new DragEvent("drop", { dataTransfer: transfer, bubbles: true, cancelable: true }));""", name, base64.b64encode(data).decode())

    def test_presets_are_opened(self):
        preset = self.studio.folder / "look.json"
        self.studio.rendered("blur", "-i", "photo.jpg", "--set", "Blurriness=0s=0;2.5s~=0.2", "--duration", "5", "!", "recolor", "--set", "Lightness=0.2", "--save-preset", str(preset))
        self.drop("look.json", preset.read_bytes())
        self.until(lambda: len(self.all(".chain li")) == 2)
        self.until(lambda: self.values() == {"Blurriness": "0=0;0.5~=0.2"})
        self.frame(30)
        self.settle()
        self.assertEqual(self.pixels()[1], self.rendered("--preset", "look.json", frame=30))

    def test_files_are_dropped(self):
        self.drop("dropped.mp4", (self.studio.folder / "clip.mp4").read_bytes())
        self.until(lambda: self.find("source-bar select").get_attribute("value") == "dropped.mp4")
        self.settle()
        self.frame(20)
        self.settle()
        self.assertEqual(self.pixels()[1], self.studio.rendered("copy", "-i", "clip.mp4", "--frames", "20-20"))

    def test_small_screens_and_daylight(self):
        self.add("blur")
        self.settle()
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": "light"}]})
        self.shot("light")
        for name, width, height in [("tablet", 900, 900), ("phone", 500, 1000)]:
            self.driver.set_window_size(width, height)
            self.settle()
            self.assertLessEqual(self.driver.execute_script("return document.documentElement.scrollWidth - innerWidth"), 0, name)
            self.shot(name)
        self.driver.set_window_size(1500, 1000)
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": "dark"}]})


class Sounds(Page):
    def test_buttons_of_a_dialog_change_it(self):
        self.open({"source": "a.wav", "stages": []})
        self.add("audio switcher")
        self.until(lambda: self.all('[data-field="Level 0"]'))
        press = lambda text: next(button for button in self.all(".press") if text in button.text).click()
        press("Add Input")
        self.until(lambda: self.all('[data-field="Level 1"]'))
        self.choose(self.all(".slots select")[0], "b.wav")
        self.set("Level 1", "0.25")
        self.settle()
        self.assertEqual(self.values(), {"Level 1": "0.25"})
        raw = subprocess.run([str(ZOL), "render", "compositing/audio switcher", "-i", "a.wav", "-i", "b.wav", "--set", "Level 1=0.25", "-o", "-"],
                             cwd=self.studio.folder, check=True, stdout=subprocess.PIPE).stdout
        heard = self.driver.execute_script("const {channels} = document.querySelector('sound-view').sound; return channels[0].slice(0, 2000).join()")
        import struct
        channels = self.driver.execute_script("return document.querySelector('sound-view').sound.channels.length")
        wanted = struct.unpack(f"<{2000 * channels}f", raw[:2000 * channels * 4])[::channels]
        self.assertEqual([struct.pack("<f", float(x)) for x in heard.split(",")], [struct.pack("<f", x) for x in wanted])
        self.find("sound-view .primary").click()
        time.sleep(0.4)
        self.assertTrue(any(m.size["width"] > 0 for m in self.all(".meters i")))
        self.shot("sound")
        self.find("sound-view .primary").click()
        self.all(".slots input")[1].click()
        press("Delete Input")
        self.until(lambda: not self.all('[data-field="Level 1"]'))


class Outputs(Page):
    def progress(self):
        return self.find("#output [role=status]").text

    def test_files_are_rendered_and_cancelled(self):
        self.open({"source": "clip.mp4", "stages": []})
        self.add("blur")
        self.settle()
        self.find("#render").click()
        self.until(lambda: self.all("#output-name"))
        name = self.find("#output-name")
        self.assertEqual(name.get_attribute("value"), "clip-blur.mp4")
        self.until(lambda: "zol render" in self.find("#output-command").get_attribute("value"))
        self.shot("render")
        self.find("#output-start").click()
        self.until(lambda: "Written" in self.progress() or "exists" in self.progress())
        self.assertTrue((self.studio.folder / "out" / "clip-blur.mp4").exists(), self.progress())
        self.find("#output-start").click()
        self.until(lambda: "exists" in self.progress())
        self.driver.execute_async_script("import('/state.js').then(({store}) => { store.change((doc) => { doc.duration = 600; doc.size = [1280, 720]; }); arguments[0](); })")
        name.clear()
        name.send_keys("long.mp4", Keys.TAB)
        self.find("#output-start").click()
        self.until(lambda: " of " in self.progress())
        self.shot("rendering")
        next(button for button in self.all("#output button") if button.text == "Cancel").click()
        self.until(lambda: "Cancelled" in self.progress())
        self.assertEqual([f for f in os.listdir(self.studio.folder / "out") if "long" in f], [])

    def test_the_copied_command_renders_what_is_shown(self):
        self.driver.execute_cdp_cmd("Browser.grantPermissions", {"permissions": ["clipboardReadWrite"], "origin": f"http://127.0.0.1:{self.studio.port}"})
        self.add("blur")
        self.set("Blurriness", "0.2")
        self.settle()
        self.find("#copy").click()
        self.until(lambda: "Copied" in self.find("#note").text)
        command = self.driver.execute_async_script("navigator.clipboard.readText().then(arguments[0])")
        subprocess.run(command.replace("zol ", f"{ZOL} ", 1), shell=True, check=True, cwd=self.studio.folder)
        self.assertEqual(self.pixels()[1], self.studio.rendered("copy", "-i", "photo-blur.png"))


class Lives(Page):
    def test_two_clients_have_values_of_their_own(self):
        other = browser(dark=False)
        try:
            self.add("blur")
            self.set("Blurriness", "0.1")
            other.get(self.studio.address)
            self.settle()
            mine, self.driver = self.driver, other
            try:
                self.until(lambda: other.execute_script("return document.body.dataset.ready === ''"))
                self.add("blur")
                self.set("Blurriness", "0.6")
                self.settle()
                theirs = self.pixels()[1]
            finally:
                self.driver = mine
            self.set("Blurriness", "0.2")
            self.settle()
            for value, pixels in [("0.2", self.pixels()[1]), ("0.6", theirs)]:
                self.assertEqual(pixels, self.rendered("blur", "-i", "photo.jpg", "--set", f"Blurriness={value}"))
        finally:
            other.quit()

    def test_the_page_goes_on_after_a_restart(self):
        self.expected_complaints = ("ERR_", "401", "Failed to load")
        self.add("blur")
        self.settle()
        self.studio.stop()
        self.set("Blurriness", "0.15")
        self.until(lambda: "has ended" in self.find("#banner").text)
        self.shot("ended")
        self.studio.start(self.studio.port)
        self.until(lambda: "started anew" in self.find("#banner").text)
        page = self.driver.current_window_handle
        self.driver.switch_to.new_window("tab")
        self.driver.get(self.studio.address)
        self.driver.close()
        self.driver.switch_to.window(page)
        self.until(lambda: not self.find("#banner").is_displayed())
        self.settle()
        self.assertEqual(self.pixels()[1], self.rendered("blur", "-i", "photo.jpg", "--set", "Blurriness=0.15"))


if __name__ == "__main__":
    unittest.main()
