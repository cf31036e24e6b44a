"""A studio server of its own for each test."""

import atexit
import functools
import http.client
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile

SKIPPED = 77  # what ctest takes as skipped

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("ZOL_BUILD_DIR", ROOT / "build" / "x86_64"))
ZOL = BUILD / "zol"


def skip(why):
    print("skipped:", why)
    sys.exit(SKIPPED)


def make(file, *words):
    """A file by ffmpeg from generators of its own."""
    subprocess.run(["ffmpeg", "-v", "error", "-y", *words, str(file)], check=True)
    return file


@functools.cache
def media():
    """The folder of what every server is given."""
    keeper = tempfile.TemporaryDirectory(prefix="zol-studio-test-")
    atexit.register(keeper.cleanup)
    folder = pathlib.Path(keeper.name)
    photo = ROOT / "build" / "media" / "photo.jpg"
    if photo.exists():
        shutil.copy(photo, folder / "photo.jpg")
    else:
        make(folder / "photo.jpg", "-f", "lavfi", "-i", "testsrc2=s=640x427", "-frames:v", "1", "-q:v", "2")
    make(folder / "clip.mp4", "-f", "lavfi", "-i", "testsrc2=s=320x180:r=25:d=2", "-f", "lavfi", "-i", "sine=440:d=2", "-shortest")
    make(folder / "a.wav", "-f", "lavfi", "-i", "sine=330:d=1")
    make(folder / "b.wav", "-f", "lavfi", "-i", "sine=550:d=1")
    return folder


class Studio:
    """The running program in a folder with a picture, a clip and sounds; gone with close()."""

    def __init__(self, *words, port=None):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="zol-studio-test-"))
        shutil.copytree(media(), self.folder, dirs_exist_ok=True)
        for folder in ["in", "out"]:
            (self.folder / folder).mkdir()
        self.words = list(words) or ["photo.jpg", "clip.mp4", "a.wav", "b.wav"]
        self.start(port)

    def start(self, port=None):
        words = [str(ZOL), "studio", *self.words, "--no-open", "--output", "out"]
        if os.environ.get("ZOL_STUDIO_PAGE"):
            words += ["--page", os.environ["ZOL_STUDIO_PAGE"]]
        if port:
            words += ["--port", str(port)]
        self.process = subprocess.Popen(words, cwd=self.folder, stdout=subprocess.PIPE, text=True)
        self.address = self.process.stdout.readline().strip()
        self.port, self.token = re.fullmatch(r"http://127\.0\.0\.1:(\d+)/\?token=([0-9a-f]{48})", self.address).groups()
        self.port = int(self.port)

    def stop(self, how=signal.SIGTERM):
        self.process.send_signal(how)
        status = self.process.wait(20)
        self.process.stdout.close()
        return status

    def close(self):
        if self.process.poll() is None:
            self.stop()
        shutil.rmtree(self.folder)

    def ask(self, method, path, body=None, headers=None, cookie=True):
        """(status, headers, bytes) of a request; a body that is no bytes goes as JSON."""
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        sent = {"Cookie": f"zol-studio-{self.port}={self.token}"} if cookie else {}
        sent.update(headers or {})
        data = body if body is None or isinstance(body, bytes) else json.dumps(body).encode()
        try:
            connection.request(method, path, data, sent)
            reply = connection.getresponse()
            return reply.status, reply.headers, reply.read()
        finally:
            connection.close()

    def json(self, method, path, body=None):
        status, _, text = self.ask(method, path, body)
        assert status == 200, (status, text)
        return json.loads(text)

    def rendered(self, *words):
        """Raw pixels (red, green, blue, alpha) of a render by the command."""
        raw = subprocess.run([str(ZOL), "render", *words, "-o", "-", "--quiet"], cwd=self.folder, check=True, stdout=subprocess.PIPE).stdout
        pixels = bytearray(raw)
        pixels[0::4], pixels[2::4] = raw[2::4], raw[0::4]
        return bytes(pixels)
