#!/usr/bin/python3
"""The studio's server: what it answers, and to whom."""

import json
import os
import pathlib
import socket
import subprocess
import threading
import time
import unittest
from urllib.parse import quote

from studio import ZOL, Studio

BLUR = {"source": "photo.jpg", "stages": [{"effect": "Filters/Blur", "settings": [["Blurriness", "0.05"]]}]}


def asking(count, **more):
    return {**BLUR, "client": "test", "number": count, **more}


class Server(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.studio = Studio()

    @classmethod
    def tearDownClass(cls):
        cls.studio.close()

    def status(self, *request, **more):
        return self.studio.ask(*request, **more)[0]

    def lives(self):
        self.assertEqual(self.status("GET", "/api/state"), 200)


class Strangers(Server):
    def test_every_path_wants_the_token(self):
        for path in ["/", "/main.js", "/api/effects", "/api/file?id=photo.jpg", "/?token=" + "0" * 48, "/main.js?token=" + self.studio.token]:
            status, headers, body = self.studio.ask("GET", path, cookie=False)
            self.assertEqual(status, 401, path)
            self.assertNotIn("Set-Cookie", headers)
            self.assertNotIn(self.studio.token.encode(), body)
        for cookie in ["zol-studio-1=" + self.studio.token, f"zol-studio-{self.studio.port}=" + self.studio.token[:-1], f"zol-studio-{self.studio.port}="]:
            self.assertEqual(self.status("GET", "/api/state", headers={"Cookie": cookie}, cookie=False), 401)
        status, headers, _ = self.studio.ask("GET", "/?token=" + self.studio.token, cookie=False)
        self.assertEqual(status, 200)
        for word in ["HttpOnly", "SameSite=Strict", self.studio.token]:
            self.assertIn(word, headers["Set-Cookie"])
        for word in ["default-src 'none'", "script-src 'self'", "frame-ancestors 'none'"]:
            self.assertIn(word, headers["Content-Security-Policy"])
        self.assertNotIn("unsafe", headers["Content-Security-Policy"])

    def test_other_names_and_origins_are_refused(self):
        port = self.studio.port
        for headers in [{"Host": f"evil.example:{port}"}, {"Host": "127.0.0.1"}, {"Host": f"127.0.0.1:{port + 1}"}, {"Origin": "http://evil.example"},
                        {"Origin": "null"}, {"Origin": f"http://127.0.0.1:{port + 1}"}, {"Sec-Fetch-Site": "cross-site"}, {"Sec-Fetch-Site": "same-site"}]:
            self.assertEqual(self.status("GET", "/api/effects", headers=headers), 403, headers)
        self.assertEqual(self.status("GET", "/api/state", headers={"Origin": f"http://127.0.0.1:{port}", "Sec-Fetch-Site": "same-origin"}), 200)

    def test_it_listens_on_this_machine_alone(self):
        with open("/proc/net/tcp") as table:
            addresses = [line.split()[1] for line in table.readlines()[1:] if line.split()[3] == "0A"]
        self.assertEqual([a for a in addresses if int(a.split(":")[1], 16) == self.studio.port], [f"0100007F:{self.studio.port:04X}"])


class Files(unittest.TestCase):
    def test_only_what_was_named_dropped_or_lies_in_the_folder_is_read(self):
        studio = Studio("photo.jpg", "--folder", "in")
        try:
            inside, secret = studio.folder / "in", studio.folder / "secret.jpg"
            (inside / "deep").mkdir(parents=True)
            for file in [secret, inside / "deep" / "x.jpg"]:
                file.write_bytes((studio.folder / "photo.jpg").read_bytes())
            (inside / "link.jpg").symlink_to(secret)
            (inside / "within.jpg").symlink_to(inside / "deep" / "x.jpg")
            ids = [file["id"] for file in studio.json("GET", "/api/files")]
            self.assertEqual(ids, ["photo.jpg", "folder/deep/x.jpg"])
            for id, status in {"photo.jpg": 200, "folder/deep/x.jpg": 200, "folder/within.jpg": 200, "folder/link.jpg": 403, "folder/../secret.jpg": 403,
                               "secret.jpg": 404, str(secret): 404, "/etc/passwd": 404, "folder//etc/passwd": 403, "folder/deep": 404, "../photo.jpg": 404, "": 404}.items():
                self.assertEqual(studio.ask("GET", "/api/file?id=" + quote(id))[0], status, id)
                body = {"source": id, "stages": [], "client": "c", "number": 1}
                self.assertEqual("X-Frame" in studio.ask("POST", "/api/frame", body)[1], status == 200, id)
            for settings in [["Geometry", "@" + str(secret)], ["Geometry", "0=M0 0;1=@/etc/passwd"], ["Input", str(secret)]]:
                stage = {"effect": "Fill Geometry", "settings": [settings]}
                self.assertIn(studio.ask("POST", "/api/frame", {"source": "photo.jpg", "stages": [stage], "client": "c", "number": 2})[0], (400, 403), settings)
            preset = {"stages": [{"effect": "Blur", "inputs": [str(secret)], "settings": [["Blurriness", "1"]]}]}
            self.assertFalse(studio.json("POST", "/api/preset", preset).get("source"))
        finally:
            studio.close()

    def test_files_are_dropped_and_gone_with_the_program(self):
        studio = Studio()
        try:
            photo = (studio.folder / "photo.jpg").read_bytes()
            status, _, text = studio.ask("POST", "/api/drop?name=..%2F..%2Fphoto.jpg", photo)
            self.assertEqual(status, 200)
            dropped = json.loads(text)
            self.assertEqual((dropped["id"], dropped["kind"]), ("photo (2).jpg", "still"))
            self.assertEqual(studio.ask("POST", "/api/drop?name=x.jpg", b"no picture")[0], 422)
            places = [p for p in pathlib.Path("/tmp").glob("zol-studio-??????") if any(p.rglob("photo.jpg"))]
            self.assertEqual(len(places), 1)
            self.assertFalse(any(places[0].rglob("x.jpg")))
            self.assertEqual(studio.stop(), 0)
            self.assertFalse(places[0].exists())
        finally:
            studio.close()


class Hostile(Server):
    def test_nonsense_gets_a_clear_status(self):
        for path in ["/api/frame", "/api/sound", "/api/dialog", "/api/command", "/api/preset", "/api/render"]:
            for body in [b"", b"{", b"[]", b"[" * 100000, b"\xff\xfe", b"null", b'{"stages": 1}', b'{"stages": [[]]}', b'{"stages": [{"effect": 5}]}', b'{"source": {}, "stages": []}']:
                status, _, text = self.studio.ask("POST", path, body)
                self.assertIn(status, (400, 422), (path, body[:40]))
                self.assertTrue(json.loads(text)["error"])
        for edit, status in [({"stages": [{"effect": "Nothing"}]}, 404), ({"stages": [{"effect": "Filters/Blur", "settings": [["Nothing", "1"]]}]}, 422),
                             ({"stages": [{"effect": "Filters/Blur", "settings": [["Blurriness", "much"]]}]}, 422), ({"stages": [{"effect": "Filters/Blur"}] * 33}, 400),
                             ({"stages": [{"effect": "Filters/Blur", "inputs": {"Nothing": "photo.jpg"}}]}, 400), ({"source": "gone.jpg"}, 404), ({"box": [1e9, 5]}, 400),
                             ({"box": [0, 0]}, 400), ({"size": [100000, 100000]}, 400), ({"frame": -1}, 400), ({"frame": 1e300}, 400), ({"client": "c" * 65}, 400), ({"number": "1"}, 400),
                             ({"duration": 0}, 400)]:
            got, _, text = self.studio.ask("POST", "/api/frame", asking(10**6, **edit))
            self.assertEqual(got, status, (edit, text))
        for path in ["/nothing.js", "/../main.js", "/%2e%2e/main.js", "/page/main.js", "/api/icon/999999", "/api/icon/x", "/api/render/77", "/" + "a" * 7000]:
            self.assertIn(self.status("GET", path), (400, 404), path)
        self.lives()

    def test_large_bodies_are_not_read(self):
        def told(length, path="/api/frame", more=""):
            with socket.create_connection(("127.0.0.1", self.studio.port), 20) as stream:
                stream.sendall(f"POST {path} HTTP/1.1\r\nHost: 127.0.0.1:{self.studio.port}\r\nCookie: zol-studio-{self.studio.port}={self.studio.token}\r\n{length}{more}\r\n".encode())
                return int(stream.recv(100).split()[1])
        self.assertEqual(told("Content-Length: 1048577\r\n"), 413)
        self.assertEqual(told("Content-Length: 99999999999\r\n", "/api/drop?name=x"), 413)
        self.assertEqual(told("Content-Length: 99999999999999999999999\r\n"), 411)
        self.assertEqual(told(""), 411)
        self.assertEqual(told("Transfer-Encoding: chunked\r\n"), 411)
        self.lives()

    def test_slow_and_many_connections_leave_room(self):
        def connection(text):
            stream = socket.create_connection(("127.0.0.1", self.studio.port), 20)
            stream.sendall(text)
            return stream
        slow = [connection(b"GET / HT") for _ in range(60)]
        began = time.monotonic()
        endless = connection(b"GET / HTTP/1.1\r\nX: ")
        dripped = []
        def drip():
            try:
                while time.monotonic() - began < 20:
                    endless.sendall(b"x")
                    time.sleep(0.25)
            except OSError:
                dripped.append(time.monotonic() - began)
        dripping = threading.Thread(target=drip)
        dripping.start()
        self.lives()
        self.assertLess(time.monotonic() - began, 3)
        slow += [connection(b"") for _ in range(75)]  # more than are served at once
        self.lives()  # the silent ones are given up
        dripping.join()
        self.assertTrue(dripped, "what is not silent, but has no end, is not given up")
        for stream in [*slow, endless]:
            stream.close()
        with open(f"/proc/{self.studio.process.pid}/status") as facts:
            resident = next(int(line.split()[1]) for line in facts if line.startswith("VmRSS"))
        self.assertLess(resident, 600_000)


class Pictures(Server):
    def picture(self, body):
        status, headers, pixels = self.studio.ask("POST", "/api/frame", body)
        self.assertEqual(status, 200, pixels[:300])
        return json.loads(headers["X-Frame"]), pixels

    def test_a_frame_is_what_the_command_renders(self):
        facts, pixels = self.picture(asking(1, box=[4000, 4000]))
        whole = ["--duration", "5", "--frames", "0-0"]
        self.assertEqual(pixels, self.studio.rendered("blur", "-i", "photo.jpg", "--set", "Blurriness=0.05", *whole))
        facts, pixels = self.picture(asking(2, box=[320, 200]))
        size = f"{facts['width']}x{facts['height']}"
        self.assertEqual((facts["wholeWidth"], facts["width"], facts["height"]), (640, 300, 200))
        self.assertEqual(pixels, self.studio.rendered("blur", "-i", "photo.jpg", "--set", "Blurriness=0.05", "--size", size, *whole))
        mix = next(effect for effect in self.studio.json("GET", "/api/effects") if effect["name"] == "Compositing/Mix")
        other = next(f["name"] for i, f in enumerate(mix["fields"]) if f["type"] == "input" and i != mix["clip"])
        facts, pixels = self.picture({"source": "clip.mp4", "client": "clip", "number": 1, "frame": 30, "stages": [
            {"effect": "Filters/Blur", "settings": [["Blurriness", "0=0;1=0.1"]]}, {"effect": "Compositing/Mix", "inputs": {other: "photo.jpg"}}]})
        self.assertEqual(pixels, self.studio.rendered("blur", "-i", "clip.mp4", "--set", "Blurriness=0=0;1=0.1", "!", "mix", "-i", "photo.jpg", "--frames", "30-30"))

    def test_drawings_keep_their_place_at_any_size(self):
        stage = {"effect": "Fill Geometry", "settings": [["Geometry", "M0 0 L320 0 L320 427 L0 427 Z"], ["Color", "#ff0000"]]}
        for number, box in enumerate([[640, 427], [160, 120]]):
            facts, pixels = self.picture({"source": "photo.jpg", "stages": [stage], "client": "draw", "number": number, "box": box})
            row = pixels[facts["width"] * 4 * (facts["height"] // 2):][:facts["width"] * 4]
            red = [row[x * 4] > 250 and row[x * 4 + 1] < 5 for x in range(facts["width"])]
            self.assertTrue(all(red[:facts["width"] // 2 - 1]) and not any(red[facts["width"] // 2 + 1:]))

    def test_the_newest_request_wins_and_clients_do_not_disturb_each_other(self):
        def worked():
            with open(f"/proc/{self.studio.process.pid}/stat") as facts:
                return sum(map(int, facts.read().split()[13:15])) / os.sysconf("SC_CLK_TCK")
        statuses = {}
        def ask(client, number, stages):
            body = {"source": "photo.jpg", "stages": [{"effect": "Filters/Blur", "settings": [["Blurriness", "1"]]}] * stages, "size": [4000, 3000]}
            statuses[client, number] = self.status("POST", "/api/frame", {**body, "client": client, "number": number})
        before = worked()
        ask("other", 1, 8)
        eight = worked() - before
        threads = [threading.Thread(target=ask, args=one) for one in [("other", 2, 1), ("hand", 1, 32), ("hand", 2, 32), ("hand", 3, 1)]]
        for thread in threads:
            thread.start()
            time.sleep(0.15)
        for thread in threads:
            thread.join()
        self.assertEqual(statuses, {("other", 1): 200, ("other", 2): 200, ("hand", 1): 204, ("hand", 2): 204, ("hand", 3): 200})
        self.assertLess(worked() - before, 5 * eight)  # the two of 32 were not rendered to their ends
        ask("hand", 2, 1)
        self.assertEqual(statuses["hand", 2], 204)

    def test_sound_is_what_the_command_renders(self):
        body = {"source": "a.wav", "client": "s", "number": 1, "stages": [{"effect": "Compositing/Audio Switcher", "inputs": {"Inputs": ["", "b.wav"]}, "settings": [["Level 0", "0.9"], ["Level 1", "0.2"]]}]}
        status, headers, wav = self.studio.ask("POST", "/api/sound", body)
        self.assertEqual((status, headers["Content-Type"]), (200, "audio/wav"))
        raw = subprocess.run([str(ZOL), "render", "compositing/audio switcher", "-i", "a.wav", "-i", "b.wav", "--set", "Level 0=0.9", "--set", "Level 1=0.2", "-o", "-"],
                             cwd=self.studio.folder, check=True, stdout=subprocess.PIPE).stdout
        self.assertEqual(wav[44:], raw)
        body["stages"][0]["inputs"] = {"Inputs": ["", "b.wav", ""]}
        self.assertIn("message", self.studio.json("POST", "/api/sound", {**body, "number": 2}))

    def test_dialogs_are_changed_by_the_effects_own_callbacks(self):
        effect = next(e for e in self.studio.json("GET", "/api/effects") if e["name"] == "Compositing/Audio Switcher")
        ids = {field["name"]: i for i, field in enumerate(effect["fields"])}
        def dialog(slots, **event):
            reply = self.studio.json("POST", "/api/dialog", {"stages": [{"effect": effect["name"], "inputs": {"Inputs": slots}}], "stage": 0, **event})
            return reply["fields"][ids["Inputs"]]["slots"], [item["name"] for item in reply["fields"][ids["Input levels"]]["items"]]
        self.assertEqual(dialog(["a.wav", ""], edited=ids["Add"]), (["a.wav", "", ""], ["Level 0", "Level 1", "Level 2"]))
        self.assertEqual(dialog(["a.wav", "", "b.wav"], edited=ids["Delete"], selected=[1]), (["a.wav", "b.wav"], ["Level 0", "Level 1"]))

    def test_a_button_sets_the_value_that_is_now(self):
        effect = next(e for e in self.studio.json("GET", "/api/effects") if e["name"] == "Time/Time Warp")
        ids = {field["name"]: i for i, field in enumerate(effect["fields"])}
        freeze = next(i for i, field in enumerate(effect["fields"]) if field["type"] == "button")
        stage = {"effect": effect["name"], "settings": [["Speed", "0=1;1=1"]]}
        reply = self.studio.json("POST", "/api/dialog", {"stages": [stage], "stage": 0, "share": 0.4, "edited": freeze})
        self.assertEqual(reply["fields"][ids["Speed"]]["value"], "0=1;0.4=0;1=1")

    def test_icons_and_declarations(self):
        effects = self.studio.json("GET", "/api/effects")
        listed = json.loads(subprocess.run([str(ZOL), "list", "--json"], check=True, stdout=subprocess.PIPE).stdout)
        self.assertEqual([{key: len(value) if key == "fields" else value for key, value in effect.items() if key in listed[0]} for effect in effects], listed)
        icons = [self.studio.ask("GET", f"/api/icon/{number}")[2] for number, effect in enumerate(effects) if effect["icon"]]
        decoded = subprocess.run(["ffmpeg", "-v", "error", "-f", "image2pipe", "-c:v", "png", "-i", "-", "-f", "rawvideo", "-pix_fmt", "rgba", "-"],
                                 input=b"".join(icons), stdout=subprocess.PIPE, check=True).stdout
        self.assertEqual(len(decoded), len(icons) * 100 * 75 * 4)


class Renders(Server):
    def finished(self, number):
        while True:
            state = self.studio.json("GET", f"/api/render/{number}")
            if state["state"] != "running":
                return state
            time.sleep(0.05)

    def render(self, **more):
        return self.studio.ask("POST", "/api/render", {"source": "clip.mp4", "stages": BLUR["stages"], "output": "x.mp4", **more})

    def test_files_are_written_and_never_over_others_unasked(self):
        out = self.studio.folder / "out"
        number = json.loads(self.render()[2])["number"]
        state = self.finished(number)
        self.assertEqual((state["state"], state["done"], state["all"], state["error"]), ("done", 50, 50, ""))
        before = (out / "x.mp4").read_bytes()
        self.assertEqual(self.render()[0], 409)
        self.assertEqual((out / "x.mp4").read_bytes(), before)
        self.assertEqual(self.finished(json.loads(self.render(overwrite=True, quality="draft")[2])["number"])["state"], "done")
        self.assertNotEqual((out / "x.mp4").read_bytes(), before)
        for name in ["../x.mp4", "/tmp/zol-x.mp4", "a/b.mp4", "", ".", "..", "-", ".x.mp4", "f-%d.png", "pipe:1\0.mp4", "x" * 300 + ".mp4"]:
            self.assertIn(self.render(output=name)[0], (400, 403), name)
        (out / "link.mp4").symlink_to(self.studio.folder / "photo.jpg")
        self.assertEqual(self.render(output="link.mp4", overwrite=True)[0], 403)

    def test_a_cancelled_render_leaves_nothing(self):
        stages = [{"effect": "Filters/Blur", "settings": [["Blurriness", "1"]]}] * 20
        number = json.loads(self.render(stages=stages, output="never.mp4", size=[1280, 720], duration=600)[2])["number"]
        time.sleep(0.5)
        self.assertEqual(self.studio.json("GET", f"/api/render/{number}")["state"], "running")
        self.assertEqual(self.status("DELETE", f"/api/render/{number}"), 200)
        self.assertEqual(self.finished(number)["state"], "cancelled")
        self.assertFalse([name for name in os.listdir(self.studio.folder / "out") if "never" in name])

    def test_command_and_preset_render_the_same(self):
        told = self.studio.json("POST", "/api/command", {"source": "photo.jpg", "stages": BLUR["stages"], "duration": 5, "frame": 3, "output": "it's.png"})
        subprocess.run(told["command"].replace("zol ", f"{ZOL} ", 1), shell=True, cwd=self.studio.folder, check=True)
        (self.studio.folder / "p.json").write_text(json.dumps(told["preset"]))
        self.assertEqual(self.studio.rendered("--preset", "p.json"), self.studio.rendered("copy", "-i", "it's.png"))
        self.assertEqual(self.studio.json("POST", "/api/preset", told["preset"]), {"source": "photo.jpg", "stages": [
            {"effect": "Filters/Blur", "inputs": {}, "settings": [["Blurriness", "0.05"]]}]})


if __name__ == "__main__":
    unittest.main()
