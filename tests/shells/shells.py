"""Interactive shells on a terminal of their own: what a user types, and the line that completion makes of it."""
import os
import pathlib
import pty
import re
import select
import signal
import time

PATIENCE = 60  # seconds without a word from the shell before it is given up
SHOW_LINE = "\x14"  # control-T
BEGIN, END = "<line|", "|line>"


class Shell:
    """Told by its subclasses how it is started, and how it comes to show the line that is being edited."""

    ARGUMENTS = ()
    SETUP = ()  # commands
    ALL = ""  # the keys that insert all candidates

    def __init__(self, program, directory, environment):
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.chdir(directory)
            os.execve(program, [program, *self.ARGUMENTS], {**environment, "TERM": "dumb", "COLUMNS": "4000"})
        for number, command in enumerate(("stty cols 4000 -echo", *self.SETUP)):
            self.run(command, number)

    def run(self, command, number=0):
        """Runs a command; what it prints."""
        self.type(f"{command}; echo 'ready'-{number}-\n")
        return self.read_until(f"ready-{number}-")[:-1]

    def close(self):
        os.kill(self.process, signal.SIGKILL)
        os.waitpid(self.process, 0)
        os.close(self.terminal)

    def type(self, text):
        os.write(self.terminal, text.encode())

    def read_until(self, end):
        text = ""
        begin = time.monotonic()
        while end not in text:
            if not select.select([self.terminal], [], [], max(0, begin + PATIENCE - time.monotonic()))[0]:
                raise AssertionError(f"the shell does not answer: {text!r}")
            text += os.read(self.terminal, 65536).decode(errors="replace")
        return text[:text.index(end)]

    def line(self, text):
        """The line after these keys; it is cleared then. Whatever else appeared on the terminal is in `self.said`."""
        self.type(text + SHOW_LINE)
        seen = self.read_until(END)
        self.said, line = seen.rsplit(BEGIN, 1)
        self.type("\x15")  # control-U
        return line.rstrip(" ")

    def completed(self, text):
        """The line after TAB."""
        return self.line(text + "\t")

    def candidates(self, text):
        """All that the last word of the text may become."""
        before = text[:re.search(r"[^ =]*$", text).start()]
        line = self.line(text + self.ALL)
        assert line.startswith(before.rstrip(" ")), (before, line)
        return line[len(before):].split()


class Bash(Shell):
    ARGUMENTS = ("--norc", "--noprofile", "-i")
    ALL = "\x1b*"

    def __init__(self, program, directory, environment, script):
        self.SETUP = ("PS1= PS2=", "bind 'set enable-bracketed-paste off'", "bind 'set bell-style none'",
                      f"bind -x '\"\\C-t\": printf \"{BEGIN}%s{END}\" \"$READLINE_LINE\"'", f"source '{script}'")
        super().__init__(program, directory, environment)


class Zsh(Shell):
    ARGUMENTS = ("-f", "-i")
    ALL = "\x18a"  # control-X a

    def __init__(self, program, directory, environment, functions):
        self.SETUP = ("PS1= PS2= PROMPT_EOL_MARK=; unsetopt zle_bracketed_paste beep prompt_cr 2>/dev/null",
                      f"show_line() {{ print -rn -- \"{BEGIN}$BUFFER{END}\" }}", "zle -N show_line; bindkey '^T' show_line",
                      f"fpath=('{functions}' $fpath); autoload -U compinit; compinit -u -D", "LISTMAX=0; bindkey '^U' kill-buffer",
                      "zle -C all-matches complete-word _generic; bindkey '^Xa' all-matches",
                      "zstyle ':completion:all-matches:*' completer _all_matches _complete",
                      "zstyle ':completion:all-matches:*' insert yes; zstyle ':completion:*' completer _complete",
                      f"exec 2>'{environment['HOME']}/said'")
        self.said_to = pathlib.Path(environment["HOME"], "said")
        super().__init__(program, directory, environment)

    def line(self, text):
        """The editor of zsh draws the line on the terminal itself, so what else is said goes into a file."""
        line = super().line(text)
        self.said = self.said_to.read_text()
        return line
