"""Speaks the Debug Adapter Protocol with `algoserver debug`, as an editor does."""
import json
import os
import select
import subprocess
import time

PATIENCE = 60  # seconds


class Editor:
    def __init__(self, command, folder, stream=None):
        self.process = None if stream else subprocess.Popen(command, cwd=folder, stdin=subprocess.PIPE,
                                                            stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.input = stream.fileno() if stream else self.process.stdout.fileno()
        self.output = stream.fileno() if stream else self.process.stdin.fileno()
        self.bytes = b""
        self.sent = 0
        self.answers, self.events = {}, []
        self.printed = {"stdout": "", "stderr": "", "console": "", "important": ""}

    def send_bytes(self, data):
        os.write(self.output, data)

    def send(self, command, arguments=None):
        self.sent += 1
        text = json.dumps({"seq": self.sent, "type": "request", "command": command, "arguments": arguments or {}}).encode()
        self.send_bytes(b"Content-Length: %d\r\n\r\n" % len(text) + text)
        return self.sent

    def _next(self, until):
        """Takes one more message; false at the end of what comes."""
        while b"\r\n\r\n" not in self.bytes or not self._is_whole():
            if not select.select([self.input], [], [], max(0, until - time.time()))[0]:
                raise TimeoutError(f"nothing came; so far {self.events[-3:]}, {self.printed}")
            data = os.read(self.input, 65536)
            if not data:
                return False
            self.bytes += data
        header, _, rest = self.bytes.partition(b"\r\n\r\n")
        size = int(header.rpartition(b":")[2])
        message, self.bytes = json.loads(rest[:size]), rest[size:]
        if message["type"] == "response":
            self.answers[message["request_seq"]] = message
        elif message["event"] == "output":
            self.printed[message["body"]["category"]] += message["body"]["output"]
        else:
            self.events.append(message)
        return True

    def _is_whole(self):
        header, _, rest = self.bytes.partition(b"\r\n\r\n")
        return len(rest) >= int(header.rpartition(b":")[2])

    def answer(self, sent):
        until = time.time() + PATIENCE
        while sent not in self.answers:
            if not self._next(until):
                raise EOFError("it ended")
        return self.answers.pop(sent)

    def ask(self, command, arguments=None):
        """The body of the answer, or the text of the refusal."""
        answer = self.answer(self.send(command, arguments))
        return answer.get("body", {}) if answer["success"] else answer["message"]

    def wait(self, *names):
        """The next event of one of these names."""
        until = time.time() + PATIENCE
        while True:
            for event in self.events:
                if event["event"] in names:
                    self.events.remove(event)
                    return event
            if not self._next(until):
                raise EOFError("it ended")

    def wait_for_output(self):
        until = time.time() + PATIENCE
        while not self.printed["stdout"]:
            if not self._next(until):
                raise EOFError("it ended")

    def end(self):
        """Leaves, and gives the exit status and what was said to standard error."""
        try:
            self.send("disconnect")
            self.process.stdin.close()
        except OSError:
            pass
        until = time.time() + PATIENCE
        while self._next(until):
            pass
        return self.process.wait(PATIENCE), self.process.stderr.read().decode()
