"""Reads the pages of `kestrinectl compare` without our own code."""
import base64
import hashlib
import io
import re
from html.parser import HTMLParser

import numpy
from PIL import Image

VOID = {"meta", "img", "input"}


class Element:
    def __init__(self, tag, attributes):
        self.tag, self.attributes, self.children = tag, dict(attributes), []

    def __getitem__(self, name):
        return self.attributes.get(name)

    @property
    def text(self):
        return "".join(child if isinstance(child, str) else child.text for child in self.children)

    def all(self, tag, **attributes):
        """The elements below this one with a tag, and attributes with these values; `class_` stands for "class"."""
        wanted = {name.rstrip("_"): value for name, value in attributes.items()}
        found = []
        for child in self.children:
            if isinstance(child, Element):
                if child.tag == tag and all(child[name] == value for name, value in wanted.items()):
                    found.append(child)
                found += child.all(tag, **attributes)
        return found

    def one(self, tag, **attributes):
        found = self.all(tag, **attributes)
        assert len(found) == 1, (tag, attributes, len(found))
        return found[0]


class Tree(HTMLParser):
    """A strict reader: every element is closed where it must be."""

    def __init__(self, text):
        super().__init__()
        self.root = Element("", {})
        self.open = [self.root]
        self.feed(text)
        self.close()
        assert self.open == [self.root], [element.tag for element in self.open]

    def handle_starttag(self, tag, attrs):
        names = [name for name, _ in attrs]
        assert len(names) == len(set(names)), f"an attribute of {tag} is repeated: {names}"
        element = Element(tag, attrs)
        self.open[-1].children.append(element)
        if tag not in VOID:
            self.open.append(element)

    def handle_endtag(self, tag):
        assert self.open[-1].tag == tag, f"</{tag}> ends <{self.open[-1].tag}>"
        self.open.pop()

    def handle_data(self, data):
        self.open[-1].children.append(data)


class EmbeddedPicture:
    def __init__(self, element):
        self.alt = element["alt"]
        self.size = int(element["width"]), int(element["height"])
        match = re.fullmatch(r"data:(image/[a-z]+);base64,([A-Za-z0-9+/]+={0,2})", element["src"])
        assert match, element["src"][:80]
        self.type, self.bytes = match[1], base64.b64decode(match[2], validate=True)

    @property
    def image(self):
        return Image.open(io.BytesIO(self.bytes))

    @property
    def samples(self):
        return numpy.asarray(self.image.convert("RGB"))


class Figure:
    def __init__(self, element):
        self.label = element.one("strong").text
        self.caption = element.one("figcaption").one("span").text
        self.pictures = [EmbeddedPicture(picture) for picture in element.all("img")]
        self.picture = self.pictures[0]


class Section:
    """What a page says about one picture."""

    def __init__(self, element):
        self.element = element
        self.name = element.one("h2").text
        rows = [[cell.text for cell in row.all("th") + row.all("td")] for row in element.one("tbody").all("tr")]
        self.rows = {row[0]: row[1:] for row in rows}
        self.figures = [Figure(figure) for figure in element.all("figure")]

    def figure(self, label):
        return next(figure for figure in self.figures if figure.label == label)


class Page:
    def __init__(self, path):
        self.bytes = path.read_bytes()
        self.text = self.bytes.decode("utf-8")
        self.tree = Tree(self.text).root
        self.title = self.tree.one("title").text
        self.sections = [Section(element) for element in self.tree.all("section")]

    def policy(self):
        """The directives of the policy, by name."""
        content = self.tree.one("meta", **{"http-equiv": "Content-Security-Policy"})["content"]
        return {words[0]: words[1:] for words in (part.split() for part in content.split(";"))}


def digest(text):
    return f"'sha256-{base64.b64encode(hashlib.sha256(text.encode()).digest()).decode()}'"


def luma(samples):
    return samples.astype(float) @ (0.299, 0.587, 0.114)


def similarity(a, b):
    """The mean structural similarity of two arrays of luma, as the publication defines it."""
    offsets = numpy.arange(11) - 5
    weights = numpy.exp(-offsets**2 / (2 * 1.5**2))
    weights /= weights.sum()

    def mean(samples):
        rows = sum(weight * samples[:, i:samples.shape[1] - 10 + i] for i, weight in enumerate(weights))
        return sum(weight * rows[i:rows.shape[0] - 10 + i] for i, weight in enumerate(weights))

    mean_a, mean_b = mean(a), mean(b)
    variances = mean(a * a) - mean_a**2 + mean(b * b) - mean_b**2
    covariance = mean(a * b) - mean_a * mean_b
    c1, c2 = (0.01 * 255) ** 2, (0.03 * 255) ** 2
    values = (2 * mean_a * mean_b + c1) * (2 * covariance + c2) / ((mean_a**2 + mean_b**2 + c1) * (variances + c2))
    return values.mean()
