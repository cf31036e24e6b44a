#!/usr/bin/python3
"""The picture of the page that the documents show.
    picture.py FILE.jpg"""

import subprocess
import sys

from browser import SHOTS, Page

STAGES = [
    {"effect": "Filters/Color/Recolor", "values": {"Hue": "18", "Saturation": "0.25"}},
    {"effect": "Complex Filters/Aureole", "values": {"Threshold": "0.62", "Radius": "0=0.1;1=0.4", "Intensity": "0=0.2;0.55~=1.1;1=0.5", "Color": "#ffb347ff", "Tint": "0.8"}},
]


def main():
    page = Page(size=(1500, 940))
    try:
        page.open({"source": "photo.jpg", "duration": 5, "frame": 55, "current": 1, "stages": [{"on": True, "inputs": {}, "items": {}, **stage} for stage in STAGES]})
        page.settle()
        page.find(".view-split").click()
        page.field("Intensity").click()
        page.settle()
        page.until(lambda: page.pixels(".before")[0] == page.pixels()[0])
        page.shot("document")
        subprocess.run(["ffmpeg", "-v", "error", "-y", "-i", str(SHOTS / "document.png"), "-vf", "scale=1200:-2:flags=lanczos", "-q:v", "4", sys.argv[1]], check=True)
    finally:
        page.close()


if __name__ == "__main__":
    main()
