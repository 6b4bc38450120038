"use strict";

const at = (id) => document.getElementById(id);

// The LEDs from left to right: name on the unit, label on the case, colour.
const leds = [
  ["Light_Static_Data", "STATIC", "yellow"],
  ["Light_Gps", "GPS", "green"],
  ["Light_Data_Se", "DATA \u25b6", "green"],
  ["Light_Data_Re", "DATA \u25c0", "green"],
  ["Light_Charge", "CHARGE", "red"],
  ["Light_Power", "POWER", "green"],
];

// The keys of each front (name on the unit, label, key of the keyboard) and a hint how to answer the
// question.
// On the panel with LEDs the power key has the code of "right".
const fronts = {
  led: {
    keys: [["ok", "OK", "Enter"], ["right", "Power", "p"]],
    hint: "OK confirms; Power once confirms after 2 s, a second time declines.",
    keyboard: "On the keyboard: Enter is OK, P is Power; held as long as you hold them.",
  },
  screen: {
    keys: [["up", "\u25b2", "ArrowUp", "up"], ["left", "\u25c0", "ArrowLeft", "left"], ["ok", "OK", "Enter"],
      ["right", "\u25b6", "ArrowRight", "right"], ["esc", "Esc", "Escape"],
      ["down", "\u25bc", "ArrowDown", "down"], ["power", "Power", "p"]],
    hint: "OK confirms, any other key declines.",
    keyboard: "On the keyboard: arrows, Enter (OK), Esc, P (Power); held as long as you hold them.",
  },
  oled: { keys: [], hint: "", keyboard: "An example draws on the grey OLED; there is no update." },
};

const longest_story = 1500; // lines; the oldest go first
const folded_within = 4; // lines: loops of the program repeat several
let front = null;
let shown_picture = -1;

// Requests to the desk are sent one after the other, so that no release overtakes its press.
let asked = Promise.resolve();
function ask(what, value = "", body = undefined) {
  asked = asked.then(async () => {
    const answer = await fetch(`${what}?value=${encodeURIComponent(value)}`, { method: "POST", body });
    trouble(answer.ok ? "" : await answer.text());
  }).catch(() => {}); // the stream reports a desk that is gone
}

function trouble(text) {
  at("trouble").textContent = text;
  at("trouble").hidden = text === "";
}

// Keys

const held = new Map(); // key of the unit -> the pointer or key that holds it

function hold(key, by) {
  if (!held.has(key)) {
    held.set(key, by);
    ask("press", key);
  }
}

function let_go(by) {
  for (const [key, holder] of held) {
    if (by === undefined || holder === by) {
      held.delete(key);
      ask("release", key);
    }
  }
}

function make_key([key, label, on_keyboard, spoken]) {
  const button = document.createElement("button");
  button.type = "button";
  button.textContent = label;
  button.dataset.key = key;
  button.style.gridArea = front === fronts.screen ? key : "auto";
  button.setAttribute("aria-label", spoken ?? label);
  button.setAttribute("aria-keyshortcuts", on_keyboard);
  let by_hand = false;
  button.addEventListener("pointerdown", (event) => {
    if (event.button === 0) {
      by_hand = true;
      button.setPointerCapture(event.pointerId);
      hold(key, event.pointerId);
    }
  });
  for (const end of ["pointerup", "pointercancel", "lostpointercapture"]) {
    button.addEventListener(end, (event) => let_go(event.pointerId));
  }
  button.addEventListener("contextmenu", (event) => event.preventDefault());
  // A click without a pointer comes from a screen reader, which cannot hold a key.
  button.addEventListener("click", () => {
    if (!by_hand) {
      hold(key, "click");
      setTimeout(() => let_go("click"), 100);
    }
    by_hand = false;
  });
  return button;
}

// Elements of the page that use some keys of the keyboard themselves.
const uses = [["button, input:not([type=range])", /^(Enter| )$/], ["input, ol", /^Arrow/], ["select", /./]];

// The unit's key for a key of the keyboard, if there is one.
function key_of(event) {
  const target = event.target;
  if (target.dataset?.key && (event.key === "Enter" || event.key === " ")) {
    return target.dataset.key;
  }
  if (event.ctrlKey || event.altKey || event.metaKey ||
      uses.some(([where, keys]) => target.matches?.(where) && keys.test(event.key))) {
    return undefined;
  }
  return front?.keys.find(([, , name]) => name.toLowerCase() === event.key.toLowerCase())?.[0];
}

addEventListener("keydown", (event) => {
  const key = key_of(event);
  if (key) {
    event.preventDefault();
    hold(key, event.code);
  }
});
addEventListener("keyup", (event) => {
  if (key_of(event)) {
    event.preventDefault(); // a button's own click
  }
  let_go(event.code);
});
addEventListener("blur", () => let_go());

// The unit

function make_front(model) {
  front = fronts[model];
  at("keys").className = model;
  at("keys").replaceChildren(...front.keys.map(make_key));
  at("hint").textContent = front.keyboard;
  at("keys").hidden = at("supplies").hidden = at("another").hidden = model === "oled";
  at("cut").hidden = at("resume").hidden = at("acknowledge").hidden = model === "oled";
  at("lamps").hidden = model !== "led";
  at("glass").hidden = model === "led";
  at("lamps").replaceChildren(...leds.map(([name, label, colour]) => {
    const lamp = document.createElement("li");
    lamp.id = name;
    lamp.className = colour;
    lamp.title = name;
    const state = document.createElement("span");
    state.className = "read";
    lamp.append(document.createElement("i"), label, state);
    return lamp;
  }));
}

function show_lamps(lit) {
  for (const [name] of leds) {
    at(name).classList.toggle("on", lit.includes(name));
    at(name).lastChild.textContent = lit.includes(name) ? " on" : " off";
  }
}

// An integer scale, so that all pixels of the unit have the same size.
function fit_screen() {
  const canvas = at("screen");
  const room = at("glass").clientWidth - 20;
  const scale = Math.max(1, Math.min(Math.floor(room * devicePixelRatio / canvas.width),
    Math.floor(420 * devicePixelRatio / canvas.height)));
  canvas.style.width = `${canvas.width * scale / devicePixelRatio}px`;
}
new ResizeObserver(fit_screen).observe(at("glass"));

async function show_picture(state) {
  if (state.picture === shown_picture || state.model === "led") {
    return;
  }
  shown_picture = state.picture;
  const answer = await fetch(`picture?value=${state.picture}`);
  const rgb = new Uint8Array(await answer.arrayBuffer());
  if (state.picture !== shown_picture) {
    return; // outdated: another picture is being loaded
  }
  const canvas = at("screen");
  canvas.width = Number(answer.headers.get("X-Width"));
  canvas.height = rgb.length / 3 / canvas.width;
  const image = new ImageData(canvas.width, canvas.height);
  for (let i = 0; i < rgb.length / 3; ++i) {
    image.data.set(rgb.subarray(3 * i, 3 * i + 3), 4 * i);
    image.data[4 * i + 3] = 255;
  }
  canvas.getContext("2d").putImageData(image, 0, 0);
  canvas.dataset.picture = state.picture;
  fit_screen();
}

function set_text(id, text) { // only if changed: a live region announces each assignment
  if (at(id).textContent !== text) {
    at(id).textContent = text;
  }
}

function show_state(state) {
  if (front !== fronts[state.model]) {
    make_front(state.model);
  }
  show_lamps(state.lit);
  show_picture(state).catch(() => {});
  set_text("subject", state.subject);
  set_text("status", state.asked ? `${state.status} ${front.hint}` : state.status);
  at("screen").setAttribute("aria-label", `Screen of the unit. ${state.status}`);
  for (const button of at("keys").children) {
    button.classList.toggle("held", state.held.includes(button.dataset.key));
  }
  for (const slider of document.querySelectorAll("input[type=range]")) {
    if (!slider.matches(":active")) {
      slider.value = state.supplies[slider.id];
    }
    show_volts(slider);
  }
  at("usb").value = state.supplies.usb;
  set_text("start", state.phase === "off" ? "Start" : "Start again");
  at("start").disabled = false;
  at("cut").disabled = state.phase !== "running";
  at("resume").disabled = state.phase !== "cut";
  at("acknowledge").disabled = !state.marker;
}

// Supplies and buttons

function show_volts(slider) {
  slider.nextElementSibling.textContent = `${Number(slider.value).toFixed(1)} V`;
}

for (const slider of document.querySelectorAll("input[type=range]")) {
  slider.addEventListener("input", () => show_volts(slider));
  slider.addEventListener("change", () => ask(slider.id, slider.value));
}
at("usb").addEventListener("change", () => ask("usb", at("usb").value));
for (const button of at("hands").children) {
  button.addEventListener("click", () => ask(button.id));
}
// After a start the keys get the focus, so that Enter means OK.
for (const what of ["start", "resume"]) {
  at(what).addEventListener("click", () => at("keys").querySelector("[data-key=ok]")?.focus());
}

function take_package(file) {
  if (file) {
    ask("package", file.name, file);
  }
}
at("package").addEventListener("change", (event) => take_package(event.target.files[0]));
addEventListener("dragover", (event) => {
  event.preventDefault();
  document.body.classList.add("drop");
});
addEventListener("dragleave", (event) => {
  document.body.classList.toggle("drop", event.relatedTarget !== null);
});
addEventListener("drop", (event) => {
  event.preventDefault();
  document.body.classList.remove("drop");
  take_package(event.dataTransfer.files[0]);
});

// Time line

at("quiet").addEventListener("change", () => at("events").classList.toggle("all", at("quiet").checked));

let last_lines = []; // {element, same, count}

function add_line({ at: time, kind, label, text }) {
  const same = `${kind} ${text}`;
  const before = last_lines.find((one) => one.same === same);
  if (before) {
    before.element.lastChild.textContent = `${text}  \u00d7${++before.count}`;
    return;
  }
  const line = document.createElement("li");
  line.className = kind + (kind === "wait" || kind === "sleep" ? " quiet" : "");
  for (const [tag, content] of [["time", `${(time / 1000).toFixed(3)} s`], ["b", label], ["span", text]]) {
    line.append(Object.assign(document.createElement(tag), { textContent: content }));
  }
  at("events").append(line);
  last_lines = [{ element: line, same, count: 1 }, ...last_lines.slice(0, folded_within - 1)];
}

function add_lines(lines) {
  const story = at("events");
  const follows = story.scrollTop + story.clientHeight > story.scrollHeight - 30;
  lines.forEach(add_line);
  while (story.childElementCount > longest_story) {
    story.firstElementChild.remove();
  }
  if (follows) {
    story.scrollTop = story.scrollHeight;
  }
}

// Messages of the desk: a run has begun ("run"), events ("lines"), the unit's state ("state").
const stream = new EventSource("events");
stream.addEventListener("run", () => {
  at("events").replaceChildren();
  last_lines = [];
});
stream.addEventListener("lines", (event) => add_lines(JSON.parse(event.data)));
stream.addEventListener("state", (event) => show_state(JSON.parse(event.data)));
stream.addEventListener("open", () => trouble(""));
stream.addEventListener("error", () => {
  trouble("The desk is gone. Start renewer-desk again and open the address that it prints.");
  let_go();
  for (const button of at("hands").children) {
    button.disabled = true;
  }
});
