"""Libraries neither print nor end the process: they return values and throw, and programs put them into words."""
import pathlib
import re
import unittest

SRC = pathlib.Path(__file__).resolve().parents[2] / "src"
# The extraction's progress and its errors are its interface, in their order; `tool` is what commands have of the
# terminal; `process` prepares the streams themselves.
SPEAKING = {"driver", "history", "process", "tool", "traversal"}
SPEECH = re.compile(r"\bstd::(cout|cerr|clog|exit|quick_exit|abort|terminate)\b|\bstd(out|err)\b|\bfmt::print\b"
                    r"|(?<![\w:.>])(exit|abort|printf|puts|perror)\(|\bstd::(printf|puts|perror)\(")


def speech_in(text):
    """Lines of code that print or end the process."""
    code = re.sub(r'"(?:\\.|[^"\\\n])*"', '""', re.sub(r"//.*", "", text))
    return [line.strip() for line in code.splitlines() if SPEECH.search(line)]


class StreamsTest(unittest.TestCase):
    def test_libraries_say_nothing(self):
        seen = 0
        for path in sorted(SRC.rglob("*")):
            folder = path.relative_to(SRC).parts[0]
            if path.suffix not in (".h", ".inc", ".cpp") or path.name == "main.cpp" or folder in SPEAKING:
                continue
            seen += 1
            self.assertEqual(speech_in(path.read_text()), [], path)
        self.assertGreater(seen, 100)

    def test_speech_is_found(self):
        for line in ('std::cerr << "no\\n";', 'std::fputs("no", stderr);', "std::exit(1);", "exit(1);", 'fmt::print("no");',
                     'std::printf("no");', '  puts("no");', "if (bad) abort();"):
            self.assertEqual(speech_in(line), [re.sub(r'"[^"]*"', '""', line.strip())])

    def test_words_and_names_are_no_speech(self):
        for line in ("// goes to std::cerr", 'text = "printf(";', "file.exit(1);", "::_exit(1);", "onexit(2);", "std::snprintf(b, 2, f);"):
            self.assertEqual(speech_in(line), [])
