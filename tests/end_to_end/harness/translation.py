"""The English text of each Chinese one, read from the translation's source."""
import os
import pathlib
import re
import xml.etree.ElementTree as ElementTree

FILE = pathlib.Path(os.environ["QUORVANE_STAGE"]) / "quorvane_en.ts"


MNEMONIC = re.compile(r"&(?=\w)")  # marks the letter of a key; a name is told without it


def _pairs():
    for message in ElementTree.parse(FILE).getroot().iter("message"):
        yield message.findtext("source"), MNEMONIC.sub("", message.findtext("translation"))


ENGLISH = dict(_pairs())


def say(locale, source, *values):
    """The text in a locale, with %1, %2, … filled in."""
    text = source if locale != "en" or source == "%1" else ENGLISH[source]
    for place, value in reversed(list(enumerate(values, 1))):
        text = text.replace(f"%{place}", str(value))
    return text
