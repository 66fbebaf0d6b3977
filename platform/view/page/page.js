// The page of one panel. It receives topics and lines as server-sent events. Each action is a panel command: the server runs
// it, and the page shows it.
"use strict";

const byId = id => document.getElementById(id);

// Makes an element. Properties whose name has a dash become attributes.
function element(tag, properties = {}, ...children) {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(properties))
    if (name.includes("-")) made.setAttribute(name, value);
    else made[name] = value;
  made.append(...children);
  return made;
}

const state = {on: null, functions: new Map(), status: {screen: {width: 800, height: 480}}, processes: {}, trees: {}};
const helperMessages = [ // messages of the window ORVATarvexHelper: name, command, argument, description
  ["ORVATarvexMsg", 1, 0, "end the helper"],
  ["ORVATarvexScreenSaverMsg", 1, 0, "screen saver: read its file again"],
  ["ORVATarvexScreenSaverMsg", 2, 1, "screen saver: create it (argument 0: remove it)"],
  ["ORVATarvexScreenSaverMsg", 3, 1000, "screen saver: time-out in ms"],
  ["ORVATarvexScreenSaverMsg", 4, 0, "screen saver: level 0 to 255, 0 is the black screen"],
  ["ORVATarvexScreenSaverMsg", 5, 1, "screen saver: save the screen at once (argument 0: disable)"],
  ["ORVATarvexBuzzerMsg", 1, 0, "touch buzzer: read its file again"],
];

// Commands

function shown(word) {
  return /^[\w.\/:=-]+$/.test(word) ? word : /[$`"!]|\\\\|\\$/.test(word) ? `'${word.replaceAll("'", "'\\''")}'` : `"${word}"`;
}

const outcomes = new Map(); // what to do at the end of each running command

async function run(...words) {
  words = words.map(String);
  const text = "panel " + words.map(shown).join(" ");
  byId("command").textContent = text;
  byId("answer").textContent = "…";
  const id = crypto.randomUUID(), outcome = new Promise(end => outcomes.set(id, end));
  let answer = {code: -1, text: "no connection to panel view"};
  if (byId("link").hidden)
    try {
      const response = await fetch("run", {method: "POST", headers: {"Content-Type": "application/json"}, body: JSON.stringify({id, words})});
      answer = response.ok ? await outcome // an event: a request would keep one of the browser's few connections
        : {code: -1, text: await response.text()};
    } catch { // panel view has ended
    }
  outcomes.delete(id);
  const said = answer.text.trim(), className = answer.code ? "bad" : "";
  if (byId("command").textContent === text) Object.assign(byId("answer"), {className, textContent: "→ " + (said.split("\n").at(-1) || "done")});
  byId("history").prepend(element("li", {}, element("code", {}, text), element("pre", {className}, said)));
  return answer;
}

// Returns the command of a form. data-run has its first words. A field whose name is an option adds this option; each other
// field adds its value. Empty fields add nothing. Each line of a field is a word of its own, also an empty line before another
// one. The fields of a name that ends with "..." are split into words as a shell does: quotes hold words together.
function commandOf(form) {
  const words = form.dataset.run.split(" ");
  for (const [name, value] of new FormData(form))
    for (const line of value && value.trimEnd().split("\n").map(line => line.trim()))
      if (name.startsWith("--")) words.push(name, ...form.elements[name].type === "checkbox" ? [] : [line]);
      else if (name.endsWith("...")) words.push("--", ...(line.match(/"[^"]*"|'[^']*'|\S+/g) || []).map(word => word.replace(/^(["'])(.*)\1$/, "$2")));
      else words.push(line);
  return words;
}

document.addEventListener("submit", event => {
  event.preventDefault();
  if (event.target.dataset.run) run(...commandOf(event.target));
});
document.addEventListener("click", ({target}) => {
  if (target.matches("button[data-run]")) run(...target.dataset.run.split(" "));
});
byId("known").append(...helperMessages.map(([name, command, , what], index) => element("option", {value: index}, `${name} ${command}: ${what}`)));
byId("known").addEventListener("change", ({target}) => {
  const [message, wparam, lparam] = helperMessages[target.value];
  for (const [name, value] of Object.entries({window: "ORVATarvexHelper", message, wparam, lparam})) byId("send").elements[name].value = value;
});
byId("known").dispatchEvent(new Event("change"));

// The face

const glass = byId("screen");
let held = null, touches = Promise.resolve(); // touches are sent one after the other

function placeOf(event) {
  const box = glass.getBoundingClientRect(), {width, height} = state.status.screen;
  const within = (part, most) => Math.max(0, Math.min(most - 1, Math.floor(part * most)));
  return [within((event.clientX - box.left) / box.width, width), within((event.clientY - box.top) / box.height, height)];
}

glass.addEventListener("contextmenu", event => event.preventDefault());
glass.addEventListener("pointerdown", event => {
  if (!state.on || held) return;
  audio();
  glass.setPointerCapture(event.pointerId);
  const finger = held = {place: placeOf(event), button: event.button === 2 ? ["--right"] : []};
  setTimeout(() => held === finger && press(), 1000);
});
glass.addEventListener("pointermove", event => {
  const finger = held, place = finger && placeOf(event);
  if (!finger || finger.moving || Math.hypot(place[0] - finger.place[0], place[1] - finger.place[1]) < 6) return;
  press();
  Object.assign(finger, {place, moving: true});
  touch(place, "--move").then(() => finger.moving = false);
});
for (const end of ["pointerup", "pointercancel"])
  glass.addEventListener(end, event => {
    if (held) touch(held.pressed ? placeOf(event) : held.place, ...held.pressed ? ["--release"] : [], ...held.button);
    held = null;
  });

// A drag or a long touch is a press, moves and a release. A click is one command: the screen saver stays until its end.
function press() {
  if (!held.pressed) touch(held.place, "--press", ...held.button);
  held.pressed = true;
}

function touch(place, ...options) {
  return touches = touches.then(() => run("touch", "--at", ...place, ...options));
}

function showTouch(line, history) {
  const parts = /^\s*(\d+) (\S+) (\d+) (\d+) (swallowed )?on (.*)$/.exec(line);
  if (!parts) return;
  const [, time, event, x, y, swallowed, window] = parts;
  byId("touches").prepend(element("li", {className: swallowed ? "bad" : ""},
    `${time} ms: ${event} at ${x}, ${y} ${swallowed ? "swallowed by the mouse hook, over" : "on"} ${window}`));
  while (byId("touches").children.length > 8) byId("touches").lastChild.remove();
  const at = {left: 100 * (+x + .5) / state.status.screen.width + "%", top: 100 * (+y + .5) / state.status.screen.height + "%"};
  Object.assign(byId("cursor").style, at);
  if (history) return;
  const ripple = element("div", {className: "ripple" + (swallowed ? " swallowed" : "")});
  Object.assign(ripple.style, at);
  ripple.addEventListener("animationend", () => ripple.remove());
  glass.append(ripple);
}

let sound = null, soundEnds = 0;
function audio() { // a browser allows sound after the first click only
  sound = sound || new AudioContext();
  if (sound.state === "suspended") sound.resume();
  return sound;
}

function click(frequency, duration, history) {
  const clicks = byId("clicks"), count = +clicks.dataset.count + 1;
  clicks.dataset.count = count;
  clicks.textContent = `${frequency} Hz for ${duration} ms, ${count} since boot`;
  if (history) return;
  byId("buzzer").className = "";
  void byId("buzzer").offsetWidth; // restarts the animation
  byId("buzzer").className = "clicks";
  const tone = audio().createOscillator(), volume = audio().createGain();
  volume.gain.value = .15;
  tone.type = "square";
  tone.frequency.value = frequency;
  tone.connect(volume).connect(audio().destination);
  const begin = Math.max(audio().currentTime, soundEnds);
  soundEnds = begin + duration / 1000 + .02;
  tone.start(begin);
  tone.stop(begin + duration / 1000);
}

function showRequest(line, history) {
  byId("requests").prepend(element("li", {className: / = error /.test(line) ? "bad" : ""}, line.trim()));
  while (byId("requests").children.length > 100) byId("requests").lastChild.remove();
  const beep = / BZR1 beep (\d+) (\d+) = done$/.exec(line);
  if (beep) click(+beep[1], +beep[2], history);
}

// Topics

function say(text) {
  byId("notice").textContent = text;
  byId("notice").hidden = !text;
}

function showStatus(status) {
  if (status.error) {
    [state.wasOn, state.on] = [state.wasOn || state.on, false]; // an error while the panel goes off must not hide the reason
    document.body.className = "lost";
    byId("power").textContent = "gone";
    return say("The panel cannot be read. It may have been deleted: " + status.error);
  }
  const before = state.wasOn && status.whyOff ? true : state.on; // without a reason it is a new panel
  state.wasOn = false;
  if (before !== null && before !== status.on) say(status.on ? "" : "The panel went off: " + (status.whyOff || "for an unknown reason"));
  else if (byId("power").textContent === "gone") say("");
  [state.status, state.on] = [status, status.on];
  document.body.className = status.on ? "on" : "";
  document.title = byId("name").textContent = "Panel " + status.directory.split("/").at(-1);
  byId("name").title = status.directory;
  byId("power").textContent = status.on ? "on" : "off";
  const {width, height} = status.screen;
  byId("desktop").textContent = `${width} × ${height}`;
  document.documentElement.style.setProperty("--w", width);
  document.documentElement.style.setProperty("--h", height);
  if (status.on) showFace(status);
  else showFaults([]);
  const disks = JSON.stringify(status.disks);
  if (state.disks !== disks) showDisks(status); // otherwise a click could miss its button
  state.disks = disks;
  showProcesses(state.processes);
}

function showFace({backLight, screen: {cover, background, process}, cursor, hook, userActive, trace, clock, date}) {
  const [level, , second] = backLight;
  const texts = {
    light: level === second ? `backlight ${level}` : `backlight ${level} and ${second}`,
    shows: cover ? `${background}: ${cover} of ${process}` : "nothing covers it",
    pointer: `cursor ${cursor.shown ? "shown" : "hidden"} (${cursor.count})`,
    hook: `mouse hook ${hook ? "of " + hook : "none"}`,
    user: userActive === null ? "unknown" : userActive ? "active" : "inactive",
    tracing: trace ? "on" : "off",
  };
  for (const [id, text] of Object.entries(texts)) byId(id).textContent = text;
  byId("light").title = "record " + backLight.join(" ");
  glass.style.setProperty("--light", Math.sqrt(Math.max(level, second) / 255));
  byId("cover").style.visibility = cover ? "visible" : "hidden";
  byId("cover").style.background = background === "white" ? "#fff" : background === "black" ? "#000" : "#666";
  byId("cursor").hidden = !cursor.shown;
  byId("boot").elements["--stepped"].checked = clock.mode === "stepped";
  byId("boot").elements["--factor"].value = clock.mode === "stepped" || clock.factor === 1 ? "" : clock.factor;
  state.clock = {...clock, date: Date.parse(date.replace(" UTC", "Z").replace(" ", "T")), at: performance.now()};
  showClock();
}

function showClock() {
  if (!state.on) return;
  const {mode, factor, time, date, at} = state.clock;
  const passed = mode === "flowing" ? (performance.now() - at) * factor : 0;
  byId("clock").textContent = new Date(date + passed).toISOString().slice(0, 19).replace("T", " ") + " UTC, " +
    `${((time + passed) / 1000).toFixed(mode === "flowing" ? 0 : 3)} s since boot, ` + (mode === "flowing" ? `flowing × ${factor}` : "stepped");
}
setInterval(() => document.hidden || showClock(), 1000);

function fill(table, heads, rows, empty) {
  const row = (cells, tag) => element("tr", {}, ...cells.map(cell => element(tag, {}, ...[cell].flat())));
  byId(table).querySelector("table").replaceChildren(...rows.length ? [row(heads, "th"), ...rows.map(cells => row(cells, "td"))]
    : [row([element("span", {className: "empty"}, empty)], "td")]);
}

// Returns whether the user types in a field here, and draws again later: the browser takes a removed field as changed.
function typing(place, draw) {
  const field = document.activeElement;
  const typed = field.type === "text" && byId(place).contains(field) && field.value !== field.defaultValue;
  if (typed) field.onblur = draw;
  return typed;
}

function button(text, ...words) {
  return element("button", {onclick: () => run(...words)}, text);
}

function showDisks(status) {
  fill("disks", ["Device", "Volumes", "Ready", ""], status.disks.map(disk => [disk.device,
    disk.partitions.map(part => `${part.volume ? "\\" + part.volume : "not mounted"} (0x${part.attributes.toString(16)})`).join(", ") || "no partitions",
    disk.readyAfter === null ? "never" : disk.readyAfter ? `after ${disk.readyAfter} ms` : "at once",
    [...disk.partitions.filter(part => part.volume && !(part.attributes & 0x10)).map(part => button("Mount", "mount", part.volume)),
      button("Unplug", "unplug", disk.device)]]), "No disk is plugged.");
  byId("paths").replaceChildren(...["MMCMemory\\Tarvex", ...status.disks.flatMap(disk => disk.partitions.map(part => part.volume + "\\Tarvex"))]
    .map(folder => element("option", {value: `\\${folder}\\TarvexHelper.exe`})));
}

function showProcesses({processes, ended}) {
  fill("programs", ["Program", "State", "Threads", "Handles", "Path"], state.on && processes ? [
    ...processes.filter(process => !process.path.endsWith("\\panel.exe")).map(process => [process.name, process.state,
      element("span", {title: (process.calls || []).map(({thread, call}) => `t${thread} ${call}`).join("\n")},
        `${process.threads}, ${process.waiting} wait`), process.handles, `${process.path} ${process.arguments}`]),
    ...ended.toReversed().map(process => [process.name,
      element("span", {className: process.exitCode ? "bad" : ""}, `ended, exit code ${process.exitCode}`), "", "", `${process.time} ms after boot`]),
  ] : [], "No program runs.");
  showOpen();
}

function showOpen() {
  timeline.showOpen(state.on && state.status.trace ? (state.processes.processes || []).flatMap(({name, calls = []}) =>
    calls.map(({since, thread, call}) => `${since} ${name} t${thread} ${call}`)) : []);
}

// Makes a select for the behaviour of an operation, and an input for its number.
function behaviour(device, operation, does) {
  const kinds = {answer: /^answers$/, refuse: /^refuses/, block: /^blocks/, delay: /^answers after/, code: /^succeeds/};
  const kind = Object.keys(kinds).find(name => kinds[name].test(does));
  const names = Object.keys(kinds).filter(name => name !== "code" || device === "tags");
  const choice = element("select", {title: does}, ...names.map(name => element("option", {selected: name === kind}, name)));
  const number = element("input", {size: 5, defaultValue: does.replace(/^\D*/, "").replace(" ", ""), title: "Error number or duration"});
  number.hidden = !number.value;
  const tell = () => run("device", device, choice.value, operation, ...number.hidden || !number.value ? []
    : [choice.value === "delay" ? "--time" : "--error", number.defaultValue = number.value]);
  choice.onchange = () => {
    number.value = {refuse: 31, code: 31, delay: "1s"}[choice.value] || "";
    number.hidden = !number.value;
    tell();
  };
  number.onchange = tell;
  return element("label", {}, operation, choice, number);
}

function showDevices(devices) {
  if (devices.error || typing("devices", () => showDevices(devices))) return;
  fill("devices", ["Device", "Present", "Values", "Behaviour"], devices.map(({name, what, present, values, does}) => {
    const there = element("input", {type: "checkbox", checked: present, "aria-label": "the panel has " + name,
      onchange: () => run("device", name, there.checked ? "add" : "remove")});
    const value = element("input", {size: 11, defaultValue: values.join(" "), "aria-label": "values of " + name,
      onchange: () => run("device", name, "set", ...(value.defaultValue = value.value).trim().split(/\s+/))});
    const operations = Object.keys(does);
    if (operations.length && name !== "tags" && !operations.includes("open")) operations.unshift("open");
    const all = operations.map(operation => behaviour(name, operation, does[operation] || "answers"));
    return [[element("b", {}, name), element("br"), what], there, values.length ? value : "",
      name === "tags" ? element("details", {}, element("summary", {}, `${all.length} functions`), ...all) : all];
  }), "");
}

const closed = new Set();
function showRegistry() {
  const {registry, flash} = state.trees;
  if (!Array.isArray(registry) || !Array.isArray(flash) || typing("tree", showRegistry)) return;
  const index = tree => new Map(tree.map(({key, values}) => [key, new Map(values.map(value => [value.name, value]))]));
  const now = index(registry), kept = index(flash), places = new Map();
  for (const key of new Set([...now.keys(), ...kept.keys()])) {
    const name = key.split("\\").at(-1), parent = key.slice(0, -name.length - 1);
    const folder = element("details", {open: !closed.has(key), ontoggle: () => folder.open ? closed.delete(key) : closed.add(key)},
      element("summary", {className: !now.has(key) ? "gone" : kept.has(key) ? "" : "unflushed"}, name));
    const values = now.get(key) || new Map(), old = kept.get(key) || new Map();
    for (const value of values.values()) {
      const before = old.get(value.name);
      folder.append(valueLine(key, value, before && before.bytes === value.bytes && before.type === value.type));
    }
    for (const name of old.keys())
      if (!values.has(name)) folder.append(element("div", {className: "value gone", title: "Deleted; flash still has it"}, name || "(default)"));
    places.set(key, folder);
    (places.get(parent) || byId("tree")).append(folder);
  }
  byId("tree").replaceChildren(...[...places].filter(([key]) => !key.includes("\\")).map(([, folder]) => folder));
}

// Makes a line with a field. The texts of a REG_MULTI_SZ are separated by " | ".
function valueLine(key, {name, type, text, texts, bytes}, flushed) {
  const number = type === "REG_DWORD" && bytes.split(" ").length === 4;
  const data = text ?? (texts ? texts.join(" | ") : number ? parseInt(bytes.split(" ").reverse().join(""), 16) : bytes);
  // Only bytes could express a text that is not well-formed, and the command takes a text here. A field has one line.
  const odd = /[\r\n]/.test(data) || text === undefined && !texts && !number && /^REG_(SZ|EXPAND_SZ|MULTI_SZ|DWORD.*)$/.test(type);
  const field = element("input", {defaultValue: data, disabled: odd, size: Math.min(60, Math.max(4, String(data).length)),
    "aria-label": `data of ${name || "the default value"} of ${key}`, onchange: () => write(field.defaultValue = field.value)});
  const write = text => {
    const words = [key, name, ...texts ? text.split(" | ").filter(Boolean) : text === "" ? [] : [text]];
    run("registry", "write", "--type", type, ...words.some(word => word.startsWith("-")) ? ["--"] : [], ...words);
  };
  return element("div", {className: "value" + (flushed ? "" : " unflushed")}, `${name || "(default)"} = `, field,
    element("small", {}, ` ${type} `), element("button", {title: "Delete this value", onclick: () => run("registry", "delete", "--", key, name)}, "×"));
}

function showFaults(faults) {
  fill("faults", ["Function", "Call", "Program", "Thread", "Action", "Hits"], faults.error ? [] : faults.map(fault => [fault.function,
    fault.call + (fault.fromThenOn ? " and all after it" : ""), (fault.program || "any") + (fault.start ? "#" + fault.start : ""), fault.thread || "any",
    fault.cut ? "power cut" + (fault.sectors ? `, ${fault.sectors} sectors stay` : "") : fault.hold ? "holds"
      : "answers" in fault ? `answers ${fault.answers}` : "fails", fault.hits]), "There are no faults.");
}

// The faults for the next boot are hidden fields of the form "boot".
function showPlanned(faults) {
  sessionStorage[location.pathname] = JSON.stringify(faults);
  byId("planned").replaceChildren(...faults.map(fault => {
    const field = element("input", {type: "hidden", name: "--fault", value: fault});
    field.setAttribute("form", "boot");
    return element("li", {}, field, element("code", {}, fault), " ",
      element("button", {onclick: () => showPlanned(faults.filter(each => each !== fault))}, "Forget"));
  }));
}

// The timeline

let chosenCall = null;
const timeline = makeTimeline(byId("track"), call => {
  chosenCall = call;
  byId("call").hidden = !call;
  byId("line").textContent = call ? call.line : "";
  const cannot = call && state.functions.get(call.name) === false;
  byId("fail").disabled = cannot;
  byId("fail").title = cannot ? `${call.name} cannot fail` : "";
}, () => {
  showFound();
  showOpen();
});

// Adds a fault to the planned faults and boots the panel.
async function plan(...options) {
  const fault = [chosenCall.key, ...options].join(" "); // the key is the beginning of the call's line in the trace
  showPlanned([...new Set(new FormData(byId("boot")).getAll("--fault")).add(fault)]);
  byId("boot").elements["--without-init"].checked = false;
  if (state.on && (await run("off")).code) return;
  byId("boot").requestSubmit();
}
byId("fail").addEventListener("click", () => plan());
byId("hold").addEventListener("click", () => plan("--hold"));
byId("cut").addEventListener("click", () => plan("--cut"));
function showFound() {
  const calls = timeline.find(byId("find").value);
  byId("found").textContent = byId("find").value && calls.length + " calls";
}
byId("find").addEventListener("input", showFound);
byId("find").addEventListener("keydown", event => event.key === "Enter" && timeline.next(event.shiftKey ? -1 : 1, timeline.find(event.target.value)));
byId("zoom").addEventListener("input", event => document.documentElement.style.setProperty("--unit", event.target.value + "px"));

// Lines and events

function showLog(lines) {
  const pane = byId("log"), following = pane.scrollTop + pane.clientHeight > pane.scrollHeight - 40;
  byId("loglines").append(...lines.map(line => element("li", {className: /^[^;]*;ERROR;/.test(line) ? "bad" : ""}, line)));
  while (byId("loglines").children.length > 4000) byId("loglines").firstChild.remove();
  if (following) pane.scrollTop = pane.scrollHeight;
}

const onLines = {
  log: {gone: () => byId("loglines").replaceChildren(), add: showLog},
  trace: {gone: () => timeline.clear(), add: lines => timeline.add(lines)},
  touches: {gone: () => byId("touches").replaceChildren(), add: (lines, history) => lines.forEach(line => showTouch(line, history))},
  requests: {gone() {
    byId("requests").replaceChildren();
    Object.assign(byId("clicks"), {textContent: "silent since boot"}).dataset.count = 0;
  }, add: (lines, history) => lines.forEach(line => showRequest(line, history))},
};

function follow() {
  const events = new EventSource("events");
  const on = (topic, action) => events.addEventListener(topic, event => action(JSON.parse(event.data)));
  on("status", showStatus);
  on("processes", answer => showProcesses(state.processes = answer));
  on("devices", showDevices);
  on("faults", showFaults);
  on("functions", functions => Array.isArray(functions) && (state.functions = new Map(functions.map(each => [each.function, each.canFail]))));
  for (const tree of ["registry", "flash"]) on(tree, keys => showRegistry(state.trees[tree] = keys));
  on("outcome", outcome => outcomes.has(outcome.id) && outcomes.get(outcome.id)(outcome));
  on("lines", ({file, gone, history, lines}) => {
    if (gone) onLines[file].gone();
    onLines[file].add(lines, history);
  });
  events.onopen = () => {
    byId("link").hidden = true;
    Object.values(onLines).forEach(each => each.gone()); // the server sends all lines again
  };
  events.onerror = () => {
    const refused = events.readyState === EventSource.CLOSED;
    byId("link").hidden = false;
    byId("link").textContent = refused ? "no connection: five pages show this panel, or panel view has another address now"
      : "no connection to panel view (trying again)";
    for (const end of outcomes.values()) end({code: -1, text: "the connection was lost before the command ended"});
    if (refused) setTimeout(follow, 3000);
  };
}

// Tabs

for (const list of document.querySelectorAll("nav")) {
  const panes = [...list.parentElement.querySelectorAll(".pane")];
  const tabs = panes.map(pane => element("button", {id: "tab-" + pane.id, role: "tab", "aria-controls": pane.id, onclick: () => choose(pane)},
    pane.getAttribute("aria-label")));
  const choose = chosen => panes.forEach((pane, index) => {
    pane.hidden = pane !== chosen;
    tabs[index].setAttribute("aria-selected", pane === chosen);
  });
  list.append(...tabs);
  choose(panes[0]);
}
showPlanned(JSON.parse(sessionStorage[location.pathname] || "[]"));
follow();
