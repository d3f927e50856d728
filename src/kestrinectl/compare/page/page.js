"use strict";

// One comparison: the viewer shows two of its images, one over the other; the figures below show all of them.
function setUp(section) {
  const find = (selector) => section.querySelector(selector);
  const findAll = (selector) => [...section.querySelectorAll(selector)];
  const figures = findAll("figure");
  const slider = find(".slider input");
  const stage = find(".stage");
  const frame = find(".frame");
  const sides = ["left", "right"].map((name) => ({
    choice: find(`select.${name}`),
    picture: find(`.frame .${name}`),
    name: find(`.slider .${name}`),
  }));
  const partChoice = find("select.part");

  const labelOf = (side) => side.choice.selectedOptions[0].textContent;
  const zoom = () => find(".zoom input:checked").value;
  const pictureOf = (figure, part) => figure.querySelectorAll("img")[part];

  function divide() {
    const left = Number(slider.value);
    sides[0].picture.style.clipPath = `inset(0 ${100 - left}% 0 0)`;
    find(".line").style.left = `${left}%`;
    slider.setAttribute("aria-valuetext", `${left} % ${labelOf(sides[0])}, ${100 - left} % ${labelOf(sides[1])}`);
  }

  // Pixels of the screen, not of the page, are counted: 1:1 is sharp on every screen.
  function scaleFor(width, height) {
    const pixel = 1 / (window.devicePixelRatio || 1);
    if (zoom() !== "fit")
      return Number(zoom()) * pixel;
    return Math.min(1, stage.clientWidth / width, (0.75 * window.innerHeight) / height);
  }

  function place() {
    const largest = sides.map((side) => side.picture).reduce((a, b) => (a.naturalWidth >= b.naturalWidth ? a : b));
    if (largest.naturalWidth === 0)
      return;
    const scale = scaleFor(largest.naturalWidth, largest.naturalHeight);
    frame.style.width = `${largest.naturalWidth * scale}px`;
    frame.style.height = `${largest.naturalHeight * scale}px`;
    find(".slider").style.width = `${Math.min(largest.naturalWidth * scale, stage.clientWidth)}px`;
    frame.classList.toggle("enlarged", zoom() === "2");
    for (const picture of findAll("figure img")) {
      const isFit = zoom() === "fit";
      picture.style.width = isFit ? "" : `${picture.naturalWidth * scale}px`;
      picture.style.maxWidth = isFit ? "" : "none";
      picture.classList.toggle("enlarged", zoom() === "2");
    }
  }

  function show() {
    const part = partChoice ? partChoice.selectedIndex : 0;
    for (const figure of figures)
      figure.querySelectorAll("img").forEach((picture, number) => { picture.hidden = number !== part; });
    for (const side of sides) {
      const source = pictureOf(figures[side.choice.selectedIndex], part);
      side.picture.src = source.src;
      side.picture.alt = source.alt;
      side.name.textContent = labelOf(side);
    }
    divide();
    place();
  }

  // All scrolled areas show the same place.
  const scrolled = [stage, ...findAll(".pane")];
  const moved = new Set();
  function scrollOthers(event) {
    const leader = event.currentTarget;
    if (moved.delete(leader))
      return;
    const share = (position, whole, seen) => (whole > seen ? position / (whole - seen) : 0);
    const x = share(leader.scrollLeft, leader.scrollWidth, leader.clientWidth);
    const y = share(leader.scrollTop, leader.scrollHeight, leader.clientHeight);
    for (const area of scrolled) {
      if (area === leader)
        continue;
      const before = [area.scrollLeft, area.scrollTop];
      area.scrollLeft = x * (area.scrollWidth - area.clientWidth);
      area.scrollTop = y * (area.scrollHeight - area.clientHeight);
      if (area.scrollLeft !== before[0] || area.scrollTop !== before[1])
        moved.add(area);
    }
  }

  function followMouse(event) {
    if (event.pointerType !== "mouse" || event.buttons !== 1)
      return;
    const box = frame.getBoundingClientRect();
    slider.value = Math.round((100 * (event.clientX - box.left)) / box.width);
    divide();
    event.preventDefault();
  }

  slider.addEventListener("input", divide);
  frame.addEventListener("pointerdown", followMouse);
  frame.addEventListener("pointermove", followMouse);
  for (const side of sides) {
    side.choice.addEventListener("change", show);
    side.picture.addEventListener("load", place);
  }
  if (partChoice)
    partChoice.addEventListener("change", show);
  for (const button of findAll(".zoom input"))
    button.addEventListener("change", place);
  for (const area of scrolled)
    area.addEventListener("scroll", scrollOthers);
  window.addEventListener("resize", place);
  section.classList.add("scripted");
  find(".viewer").hidden = false;
  show();
}

document.querySelectorAll(".comparison").forEach(setUp);
