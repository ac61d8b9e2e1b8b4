#!/usr/bin/env python3
"""A speech service that says nothing: fake_speech_service.py SOCKET LOG ok[:SECONDS]|noend|stuck|die

Answers a client of speech-dispatcher's protocol and writes every text it is given to LOG, one line
each, as JSON. "ok" reports the beginning of a text and, 0.3 s or so many seconds later, its end, or
writes "CUT" when the client does anything before; "stuck" reports the beginning only; "noend"
nothing; "die" ends with the first text, which it has written."""
import json
import os
import select
import socket
import sys
import threading

ANSWERS = [
    ("SPEAK", ["230 OK RECEIVING DATA"]),
    ("LIST OUTPUT_MODULES", ["250-fake", "250 OK MODULE LIST SENT"]),
    ("LIST SYNTHESIS_VOICES", ["249-English\ten\tnone", "249 OK VOICE LIST SENT"]),
    ("LIST VOICES", ["249-MALE1", "249 OK VOICE LIST SENT"]),
    ("GET OUTPUT_MODULE", ["251-fake", "251 OK GET RETURNED"]),
    ("GET", ["251-0", "251 OK GET RETURNED"]),
    ("HISTORY GET CLIENT_ID", ["245-1", "245 OK CLIENT ID SENT"]),
    ("QUIT", ["231 HAPPY HACKING"]),
    ("", ["200 OK"]),
]


class Client:
    def __init__(self, connection, log, mode):
        self.connection, self.log = connection, log
        self.mode, _, self.length = mode.partition(":")
        self.lock = threading.Lock()
        self.messages = 0

    def send(self, lines):
        with self.lock:
            try:
                self.connection.sendall("".join(line + "\r\n" for line in lines).encode())
            except OSError:
                pass

    def event(self, code, name):
        message = self.messages
        self.send([f"{code}-{message}", f"{code}-1", f"{code} {name}"])

    def said(self, text):
        self.messages += 1
        self.log.write(json.dumps(text, ensure_ascii=False) + "\n")
        if self.mode == "die":
            os._exit(0)
        self.send([f"225-{self.messages}", "225 OK MESSAGE QUEUED"])
        if self.mode != "noend":
            self.event(701, "BEGIN")
        if self.mode == "ok":
            if select.select([self.connection], [], [], float(self.length or 0.3))[0]:
                self.log.write('"CUT"\n')
            self.event(702, "END")

    def serve(self):
        text = None
        for raw in self.connection.makefile("rb"):
            line = raw.decode().rstrip("\r\n")
            if text is None:
                self.send(next(answer for start, answer in ANSWERS
                               if line.upper().startswith(start)))
                if line.upper() == "SPEAK":
                    text = []
            elif line == ".":
                self.said("\n".join(text))
                text = None
            else:
                text.append(line[1:] if line.startswith("..") else line)


def main():
    path, log_path, mode = sys.argv[1:]
    if os.path.exists(path):
        os.unlink(path)
    server = socket.socket(socket.AF_UNIX)
    server.bind(path)
    server.listen(8)
    with open(log_path, "a", buffering=1, encoding="utf-8") as log:
        while True:
            client = Client(server.accept()[0], log, mode)
            threading.Thread(target=client.serve, daemon=True).start()


if __name__ == "__main__":
    main()
