#!/usr/bin/python3
"""The studio's page in a browser. A picture of every state goes to the build folder."""

import os
import struct
import subprocess
import time
import unittest

from browser import SETTLED, ActionChains, By, Keys, Page, browser
from studio import ZOL

thorough = unittest.skipUnless(os.environ.get("ZOL_ALL"), "with ZOL_ALL=1")


def setUpModule():
    global page
    page = Page()
    unittest.addModuleCleanup(page.close)


class Tests(unittest.TestCase):
    """One session for all: each test opens the page anew, with `document` in its address."""

    document = None

    def setUp(self):
        self.expected_complaints = ()
        page.open(self.document)

    def tearDown(self):
        for entry in page.driver.get_log("browser"):
            known = any(word in entry["message"] for word in self.expected_complaints)
            self.assertTrue(known, entry["message"])


class Pictures(Tests):
    def test_a_dragged_slider_shows_what_the_command_renders(self):
        page.settle()
        page.shot("start")
        page.add("blur")
        page.settle()
        slider = page.field("Blurriness", "input[type=range]")
        drag = ActionChains(page.driver, duration=10).click_and_hold(slider)
        for _ in range(12):
            drag.move_by_offset(3, 0)
        drag.release().perform()
        page.settle()
        value = page.values()["Blurriness"]
        self.assertGreater(float(value), 0.5)
        size, pixels = page.pixels()
        self.assertEqual(size, (640, 427))
        self.assertEqual(pixels, page.rendered("blur", "-i", "photo.jpg", "--set", f"Blurriness={value}"))
        page.find("#undo").click()  # the drag is one step
        self.assertEqual(page.values(), {})
        page.find("#redo").click()
        self.assertEqual(page.values(), {"Blurriness": value})
        page.set("Blurriness", "1.25")  # beyond the range, where only its lower end is a limit
        self.assertEqual(page.values()["Blurriness"], "1.25")
        page.set("Blurriness", "-1")
        self.assertEqual(page.values()["Blurriness"], "0")
        ActionChains(page.driver).double_click(page.find('[data-field="Blurriness"] .name')).perform()
        self.assertEqual(page.values(), {})
        page.settle()
        page.shot("blur")

    @thorough
    def test_effects_of_each_family_render(self):
        families = page.driver.execute_async_script(
            "import('/state.js').then(({effects}) => { const all = {}; for (const e of effects) if (e.renders) (all[e.family] ??= []).push(e.name); arguments[0](all); })")
        self.assertGreater(len(families), 5)
        for family, names in families.items():
            for name in names:
                with self.subTest(name):
                    sound = "udio" in name
                    page.open({"source": "a.wav" if sound else "photo.jpg", "duration": None if sound else 5, "stages": []})
                    page.driver.execute_async_script("const [name, done] = arguments; Promise.all([import('/state.js'), import('/effects.js')]).then(([s, e]) => { e.addEffect(s.effectNamed(name)); done(); })", name)
                    for select in page.all(".dialog .input select"):
                        page.choose(select, "b.wav" if sound else "clip.mp4")
                    page.until(lambda: page.driver.execute_async_script(SETTLED) or page.message(), name)
                    if name == names[0]:
                        page.shot("family-" + family.lower().replace(" / ", "-").replace(" ", "-"))
                    self.assertNotIn("no file", page.message())

    def test_chains_are_ordered_and_switched(self):
        for name in ["blur", "recolor", "spread"]:
            page.add(name)
        page.settle()
        names = lambda: [button.text.strip("0123456789 \n") for button in page.all(".chain .stage")]
        first = names()
        self.assertEqual(first[0], "Blur")
        stages = page.all(".chain .stage")
        stages[0].send_keys(Keys.ALT, Keys.ARROW_DOWN)
        self.assertEqual(names(), [first[1], first[0], first[2]])
        page.shot("chain")
        for place in (2, 0):
            page.all(".chain input")[place].click()
        page.settle()
        self.assertEqual(page.pixels()[1], page.rendered("blur", "-i", "photo.jpg"))
        page.all(".chain li")[1].find_element(By.CSS_SELECTOR, "[aria-label^=Remove]").click()
        self.assertEqual(len(names()), 2)

    def test_keyframes_change_the_picture_over_time(self):
        page.add("blur")
        page.settle()
        page.set("Blurriness", "0")
        page.field("Blurriness", ".key").click()
        page.frame(100)
        page.settle()
        page.set("Blurriness", "0.4")
        page.frame(62)
        page.settle()
        text = page.values()["Blurriness"]
        self.assertRegex(text, r"^0=0;0\.8=0\.4;1=0$")
        self.assertEqual(page.pixels()[1], page.rendered("blur", "-i", "photo.jpg", "--set", f"Blurriness={text}", frame=62))
        marks = page.all(".key-mark")
        self.assertGreaterEqual(len(marks), 2)
        page.driver.execute_script("arguments[0].focus()", marks[0])
        marks[0].send_keys("c")
        self.assertIn("0~=0", page.values()["Blurriness"])
        page.settle()
        self.assertEqual(page.field("Blurriness").get_attribute("value"), page.driver.execute_async_script(
            "import('/curves.js').then((c) => arguments[1](String(Number(Number(c.textAt(c.parse(arguments[0]), 62 / 125)).toPrecision(5)))))", page.values()["Blurriness"]))
        self.assertEqual(page.pixels()[1], page.rendered("blur", "-i", "photo.jpg", "--set", f"Blurriness={page.values()['Blurriness']}", frame=62))
        mark = page.all(".key-mark")[1]
        ActionChains(page.driver, duration=50).drag_and_drop_by_offset(mark, -200, 0).perform()
        self.assertNotIn("0.8=", page.values()["Blurriness"])
        page.shot("keyframes")

    def test_shapes_are_drawn_on_the_picture(self):
        page.add("fill geometry")
        page.until(lambda: page.message())
        pen = lambda tool: next(button for button in page.all(".drawbar button") if button.text == tool).click()
        svg = page.find(".shapes")
        pen("Ellipse")
        ActionChains(page.driver, duration=50).move_to_element_with_offset(svg, -160, -100).click_and_hold().move_by_offset(150, 150).release().perform()
        page.settle()
        path = page.values()["Geometry"]
        self.assertRegex(path, r"^M[\d.]+ [\d.]+ C.* Z$")
        self.assertEqual(page.pixels()[1], page.rendered("fill geometry", "-i", "photo.jpg", "--set", f"Geometry={path}"))
        node = page.all(".node")[0]
        ActionChains(page.driver, duration=50).drag_and_drop_by_offset(node, 40, 0).perform()
        page.settle()
        self.assertNotEqual(page.values()["Geometry"], path)
        pen("Pen")
        corners = ActionChains(page.driver, duration=50).move_to_element_with_offset(svg, 60, 60)
        for x, y in [(0, 0), (120, 0), (-40, 90)]:
            corners.move_by_offset(x, y).click()
        corners.send_keys(Keys.ENTER).perform()
        page.settle()
        path = page.values()["Geometry"]
        self.assertEqual(path.count("M"), 2)
        self.assertEqual(page.pixels()[1], page.rendered("fill geometry", "-i", "photo.jpg", "--set", f"Geometry={path}"))
        page.shot("geometry")
        text = page.field("Geometry", "textarea")
        text.clear()
        text.send_keys("M100 60C130 20 200 60 100 160 0 60 70 20 100 60Z", Keys.TAB)
        page.settle()
        self.assertEqual(len(page.all(".node")), 3 - 1)
        arcs = "M100 100a90 60 30 1 0 120-20A 50,50 0 01 300 200 60 80 0 0 0 100 100Z"
        text.clear()
        text.send_keys(arcs, Keys.TAB)
        page.settle()
        self.assertEqual(page.values()["Geometry"], arcs)
        self.assertGreater(len(page.all(".node")), 5)
        drawn = """
            const path = document.createElementNS("http://www.w3.org/2000/svg", "path");
            path.setAttribute("d", arguments[0]);
            const length = path.getTotalLength();
            return [length, ...Array.from({length: 9}, (_, i) => path.getPointAtLength(length * i / 9)).flatMap(({x, y}) => [x, y])];"""
        wanted = page.driver.execute_script(drawn, arcs)
        for got, asked in zip(page.driver.execute_script(drawn, page.find(".shapes .outline").get_attribute("d")), wanted):
            self.assertAlmostEqual(got, asked, delta=0.3)

    @thorough
    def test_views_compare_and_zoom(self):
        page.add("recolor" if page.driver.execute_async_script("import('/state.js').then(({effectNamed}) => arguments[0](Boolean(effectNamed('Filters/Color/Recolor')?.renders)))") else "blur")
        page.settle()
        page.find(".view-split").click()
        page.settle()
        page.until(lambda: page.find(".before").is_displayed() and page.pixels(".before")[0] == (640, 427))
        self.assertEqual(page.pixels(".before")[1], page.rendered("copy", "-i", "photo.jpg"))
        page.shot("split")
        for _ in range(6):
            page.find(".view-in").click()
        page.settle()
        self.assertEqual(page.pixels()[0], (640, 427))
        middle = "const box = document.querySelector(arguments[0]).getBoundingClientRect(); return [box.x + box.width / 2, box.y + box.height / 2].map(Math.round)"
        self.assertEqual(page.driver.execute_script(middle, ".sheet"), page.driver.execute_script(middle, ".desk"))
        ActionChains(page.driver, duration=50).move_to_element_with_offset(page.find(".desk"), 100, 100).click_and_hold().move_by_offset(30, -20).release().perform()
        moved = page.driver.execute_script(middle, ".sheet")
        self.assertEqual([a - b for a, b in zip(moved, page.driver.execute_script(middle, ".desk"))], [30, -20])
        page.shot("zoom")
        page.find(".view-fit").click()

    @thorough
    def test_a_keyer_takes_a_colour_from_the_picture_over_a_chequerboard(self):
        page.add("color keyer")
        page.choose(page.field("Background", "select"), "clip.mp4")
        page.settle()
        name = page.find(".field.color").get_attribute("data-field")
        page.field(name, "button[aria-label^=Pick]").click()
        ActionChains(page.driver).move_to_element_with_offset(page.find(".sheet"), -150, -150).click().perform()
        page.until(lambda: name in page.values())
        page.settle()
        self.assertRegex(page.values()[name], r"^#[0-9a-f]{8}$")
        page.shot("keyer")

    def test_reload_keeps_everything(self):
        page.add("blur")
        page.set("Blurriness", "0.3")
        page.frame(10)
        page.settle()
        time.sleep(0.4)
        before = page.pixels()
        page.driver.refresh()
        page.until(lambda: page.driver.execute_script("return document.body.dataset.ready === ''"))
        page.settle()
        self.assertEqual(page.values(), {"Blurriness": "0.3"})
        self.assertEqual(page.pixels(), before)
        self.assertNotIn("token", page.driver.current_url)

    @thorough
    def test_presets_are_opened(self):
        preset = page.studio.folder / "look.json"
        page.studio.rendered("blur", "-i", "photo.jpg", "--set", "Blurriness=0s=0;2.5s~=0.2", "--duration", "5", "!", "recolor", "--set", "Lightness=0.2", "--save-preset", str(preset))
        page.drop("look.json", preset.read_bytes())
        page.until(lambda: len(page.all(".chain li")) == 2)
        page.until(lambda: page.values() == {"Blurriness": "0=0;0.5~=0.2"})
        page.frame(30)
        page.settle()
        self.assertEqual(page.pixels()[1], page.rendered("--preset", "look.json", frame=30))

    @thorough
    def test_files_are_dropped(self):
        page.drop("dropped.mp4", (page.studio.folder / "clip.mp4").read_bytes())
        page.until(lambda: page.find("source-bar select").get_attribute("value") == "dropped.mp4")
        page.settle()
        page.frame(20)
        page.settle()
        self.assertEqual(page.pixels()[1], page.studio.rendered("copy", "-i", "clip.mp4", "--frames", "20-20"))

    @thorough
    def test_small_screens_and_daylight(self):
        page.add("blur")
        page.settle()
        page.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": "light"}]})
        page.shot("light")
        for name, width, height in [("tablet", 900, 900), ("phone", 500, 1000)]:
            page.driver.set_window_size(width, height)
            page.settle()
            self.assertLessEqual(page.driver.execute_script("return document.documentElement.scrollWidth - innerWidth"), 0, name)
            page.shot(name)
        page.driver.set_window_size(1500, 1000)
        page.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": "dark"}]})


class Sounds(Tests):
    document = {"source": "a.wav", "stages": []}

    def test_buttons_of_a_dialog_change_it(self):
        page.add("audio switcher")
        page.until(lambda: page.all('[data-field="Level 0"]'))
        press = lambda text: next(button for button in page.all(".press") if text in button.text).click()
        press("Add Input")
        page.until(lambda: page.all('[data-field="Level 1"]'))
        page.choose(page.all(".slots select")[0], "b.wav")
        page.set("Level 1", "0.25")
        page.settle()
        self.assertEqual(page.values(), {"Level 1": "0.25"})
        raw = subprocess.run([str(ZOL), "render", "compositing/audio switcher", "-i", "a.wav", "-i", "b.wav", "--set", "Level 1=0.25", "-o", "-"],
                             cwd=page.studio.folder, check=True, stdout=subprocess.PIPE).stdout
        heard = page.driver.execute_script("const {channels} = document.querySelector('sound-view').sound; return channels[0].slice(0, 2000).join()")
        channels = page.driver.execute_script("return document.querySelector('sound-view').sound.channels.length")
        wanted = struct.unpack(f"<{2000 * channels}f", raw[:2000 * channels * 4])[::channels]
        self.assertEqual([struct.pack("<f", float(x)) for x in heard.split(",")], [struct.pack("<f", x) for x in wanted])
        page.find("sound-view .primary").click()
        time.sleep(0.4)
        self.assertTrue(any(m.size["width"] > 0 for m in page.all(".meters i")))
        page.shot("sound")
        page.find("sound-view .primary").click()
        page.all(".slots input")[1].click()
        press("Delete Input")
        page.until(lambda: not page.all('[data-field="Level 1"]'))


class Outputs(Tests):
    def progress(self):
        return page.find("#output [role=status]").text

    def test_files_are_rendered_and_cancelled(self):
        page.open({"source": "clip.mp4", "stages": []})
        page.add("blur")
        page.settle()
        page.find("#render").click()
        page.until(lambda: page.all("#output-name"))
        name = page.find("#output-name")
        self.assertEqual(name.get_attribute("value"), "clip-blur.mp4")
        page.until(lambda: "zol render" in page.find("#output-command").get_attribute("value"))
        page.shot("render")
        page.find("#output-start").click()
        page.until(lambda: "Written" in self.progress() or "exists" in self.progress())
        self.assertTrue((page.studio.folder / "out" / "clip-blur.mp4").exists(), self.progress())
        page.find("#output-start").click()
        page.until(lambda: "exists" in self.progress())
        page.driver.execute_async_script("import('/state.js').then(({store}) => { store.change((doc) => { doc.duration = 600; doc.size = [1280, 720]; }); arguments[0](); })")
        name.clear()
        name.send_keys("long.mp4", Keys.TAB)
        page.find("#output-start").click()
        page.until(lambda: " of " in self.progress())
        page.shot("rendering")
        next(button for button in page.all("#output button") if button.text == "Cancel").click()
        page.until(lambda: "Cancelled" in self.progress())
        self.assertEqual([f for f in os.listdir(page.studio.folder / "out") if "long" in f], [])

    @thorough
    def test_the_copied_command_renders_what_is_shown(self):
        page.driver.execute_cdp_cmd("Browser.grantPermissions", {"permissions": ["clipboardReadWrite"], "origin": f"http://127.0.0.1:{page.studio.port}"})
        page.add("blur")
        page.set("Blurriness", "0.2")
        page.settle()
        page.find("#copy").click()
        page.until(lambda: "Copied" in page.find("#note").text)
        command = page.driver.execute_async_script("navigator.clipboard.readText().then(arguments[0])")
        subprocess.run(command.replace("zol ", f"{ZOL} ", 1), shell=True, check=True, cwd=page.studio.folder)
        self.assertEqual(page.pixels()[1], page.studio.rendered("copy", "-i", "photo-blur.png"))


@thorough
class Lives(Tests):
    def test_two_clients_have_values_of_their_own(self):
        other = browser(dark=False)
        try:
            page.add("blur")
            page.set("Blurriness", "0.1")
            other.get(page.studio.address)
            page.settle()
            mine, page.driver = page.driver, other
            try:
                page.until(lambda: other.execute_script("return document.body.dataset.ready === ''"))
                page.add("blur")
                page.set("Blurriness", "0.6")
                page.settle()
                theirs = page.pixels()[1]
            finally:
                page.driver = mine
            page.set("Blurriness", "0.2")
            page.settle()
            for value, pixels in [("0.2", page.pixels()[1]), ("0.6", theirs)]:
                self.assertEqual(pixels, page.rendered("blur", "-i", "photo.jpg", "--set", f"Blurriness={value}"))
        finally:
            other.quit()

    def test_the_page_goes_on_after_a_restart(self):
        self.expected_complaints = ("ERR_", "401", "Failed to load")
        page.add("blur")
        page.settle()
        page.studio.stop()
        page.set("Blurriness", "0.15")
        page.until(lambda: "has ended" in page.find("#banner").text)
        page.shot("ended")
        page.studio.start(page.studio.port)
        page.until(lambda: "started anew" in page.find("#banner").text)
        tab = page.driver.current_window_handle
        page.driver.switch_to.new_window("tab")
        page.driver.get(page.studio.address)
        page.driver.close()
        page.driver.switch_to.window(tab)
        page.until(lambda: not page.find("#banner").is_displayed())
        page.settle()
        self.assertEqual(page.pixels()[1], page.rendered("blur", "-i", "photo.jpg", "--set", "Blurriness=0.15"))


if __name__ == "__main__":
    unittest.main()
