#!/usr/bin/python3
"""How the picture follows a hand: Blur of a 1080p clip while its slider is dragged for some seconds.
    rate.py [SECONDS]"""

import statistics
import sys

from browser import Page
from studio import make

DRAG = """
(async (seconds, done) => {
const { store } = await import("/state.js");
const view = document.querySelector("picture-view");
const slider = document.querySelector('[data-field="Blurriness"] input[type=range]');
const { told } = view.pictures;
const asked = new Map(), drawn = [];
view.pictures.told = (message, facts, body) => {
  told(message, facts, body);
  if (facts) requestAnimationFrame(() => drawn.push([performance.now() - asked.get(body.stages[0].settings[0][1]), facts.width, facts.height]));
};
const began = performance.now();
(function drag() {
  const now = performance.now() - began;
  if (now > seconds * 1000) return setTimeout(() => { view.pictures.told = told; done(drawn); }, 500);
  slider.value = 0.02 + 0.4 * (1 - Math.cos(now / 700));
  slider.dispatchEvent(new Event("input"));
  asked.set(store.doc.stages[0].values.Blurriness, performance.now());
  requestAnimationFrame(drag);
})();
})(...arguments);"""


def measure(page, seconds):
    lags, widths, heights = zip(*page.driver.execute_async_script(DRAG, seconds))
    sizes = sorted(set(zip(widths, heights)), reverse=True)
    print(f"  {len(lags) / seconds:.0f} pictures a second, {statistics.median(lags):.0f} ms behind the hand (at most {max(lags):.0f}), of "
          + ", ".join(f"{w} x {h} ({100 * widths.count(w) // len(widths)} %)" for w, h in sizes))


def main():
    seconds = float(sys.argv[1]) if len(sys.argv) > 1 else 5
    page = Page(size=(2300, 1300))
    try:
        page.driver.set_script_timeout(seconds + 20)
        clip = make(page.studio.folder / "hd.mp4", "-f", "lavfi", "-i", "testsrc2=s=1920x1080:r=25:d=1")
        page.open()
        page.drop("hd.mp4", clip.read_bytes())
        page.until(lambda: page.find("source-bar select").get_attribute("value") == "hd.mp4")
        page.add("blur")
        page.settle()
        for name, size in [("in a window of 1500 x 1000", (1500, 1000)), ("in one of 2300 x 1300", (2300, 1300))]:
            page.driver.set_window_size(*size)
            page.settle()
            print(name)
            measure(page, seconds)
        page.find(".view-whole").click()
        page.settle()
        print("there at 100 %")
        measure(page, seconds)
    finally:
        page.close()


if __name__ == "__main__":
    main()
