#!/usr/bin/env python3
"""Captures the example sessions of docs/backend-protocol.md anew from a real backend.

    scripts/capture-session.py build/release/bin/korvex2-backend [docs/backend-protocol.md]

Blocks marked "session" hold commands (lines that begin with "> "). They are sent, in the order of the document, to a
backend on a fresh copy of the shipped bodies, and the answers ("< ") and datagrams ("| ") are put in their places, with
the old ones taken out. To change an example, change its commands and run this. A block marked "session on a new
backend" begins with a fresh one.
"""
import pathlib
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import time

SOURCE = pathlib.Path(__file__).resolve().parent.parent
SHOWN_PORT = "50123"


class Backend:
    def __init__(self, program):
        self.folder = tempfile.TemporaryDirectory()
        database = pathlib.Path(self.folder.name) / "database"
        shutil.copytree(SOURCE / "data", database)
        self.process = subprocess.Popen(
            [program, "--listen", "127.0.0.1:0", "--database", str(database), "--rate", "60",
             "--trajectory", str(SOURCE / "data/trajectories/handheld_xyz.tum")],
            stdout=subprocess.PIPE, text=True)
        port = int(self.process.stdout.readline().rpartition(":")[2])
        time.sleep(0.5)  # few clients come so early that they see the first frames
        self.socket = socket.create_connection(("127.0.0.1", port), timeout=10)
        self.answers = self.socket.makefile("r", encoding="utf-8", newline="\n")
        self.datagrams = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.datagrams.bind(("127.0.0.1", 0))
        self.datagrams.settimeout(10)

    def answer(self, command):
        own_port = str(self.datagrams.getsockname()[1])
        self.socket.sendall(re.sub(rf"udp {SHOWN_PORT}$", "udp " + own_port, command).encode() + b"\n")
        return re.sub(rf"udp {own_port}$", "udp " + SHOWN_PORT, self.answers.readline().rstrip("\n"))

    def datagram(self):
        return self.datagrams.recv(65507).decode("ascii").splitlines()

    def close(self):
        self.socket.close()
        self.process.terminate()
        self.process.wait(10)
        self.folder.cleanup()


def played(backend, lines):
    for line in lines:
        if line.startswith("> "):
            yield line
            yield "< " + backend.answer(line[2:])
        elif line.startswith("|") and not line.startswith("| ts") and not line.startswith("| 6d"):
            for received in backend.datagram():
                yield "| " + received


def main(program, document=SOURCE / "docs/backend-protocol.md"):
    path = pathlib.Path(document)
    backend = Backend(program)
    out, block, mark = [], None, ""
    for line in path.read_text(encoding="utf-8").split("\n"):
        if block is None:
            out.append(line)
            if line.startswith("```") and mark.startswith("<!-- session"):
                block = []
                if "new backend" in mark:
                    backend.close()
                    backend = Backend(program)
            mark = line
        elif line.startswith("```"):
            out += played(backend, block)
            out.append(line)
            block, mark = None, ""
        else:
            block.append(line)
    backend.close()
    path.write_text("\n".join(out), encoding="utf-8")


main(*sys.argv[1:])
