// The trace as a timeline: a row per thread, a bar per call. Positions are slots. Each call ends in a slot of its own, in the
// order of the trace, so that calls of the same millisecond keep their order. A gap means that panel time has passed.
"use strict";

// Calls onChoose with the selected call or null, and onDraw after new calls were drawn.
function makeTimeline(track, onChoose, onDraw) {
  const most = 4000, kept = 3000, pause = 100; // calls, calls, ms
  const hues = [[/Window|Message|Cursor|Class|Hook/, 280], [/File|Find|Directory|Volume|Store|Partition|DeviceIo/, 145], [/^Reg/, 35],
    [/Event|Mutex|Semaphore|CriticalSection|Thread|Process/, 205]];
  let calls, rows, steps, edge, labelled, head, waiting, timer = null, unreturned = [], chosen = null;

  function clear() {
    [calls, rows, steps, edge, labelled, waiting] = [[], new Map(), [], 0, -9, []];
    track.replaceChildren();
    head = addRow("panel time", "head");
    choose(null);
  }

  function addRow(name, kind) {
    const cells = element("div", {className: "calls"});
    const row = element("div", {className: "row " + kind, name}, element("b", {title: name}, name), cells);
    const later = [...track.children].slice(1).find(other => other.name.localeCompare(name, undefined, {numeric: true}) > 0);
    track.insertBefore(row, later || null);
    return {cells, end: 0};
  }

  // "  1000 TarvexHelper.exe#1 t1 Sleep[1](1000) = void after 1000 ms"; without " = " the call has not returned.
  function parse(line) {
    const parts = /^\s*(\d+) (.+#\d+ t\d+) ((\w+)\[\d+\])(.*)$/s.exec(line);
    if (!parts) return null;
    const [, time, thread, call, name, rest] = parts;
    const at = rest.lastIndexOf(") = "), result = at < 0 ? "" : rest.slice(at + 4);
    return {line: line.trim(), time: +time, thread, name, key: `${thread} ${call}`, open: at < 0,
      failed: / error \d+/.test(result), fault: / fault\b/.test(result), took: +(/ after (\d+) ms/.exec(result) || [0, 0])[1]};
  }

  function slotOf(time) { // the first slot of a millisecond
    return steps.findLast(step => step.time <= time)?.slot ?? 0;
  }

  function rowOf({thread}) {
    if (!rows.has(thread)) rows.set(thread, addRow(thread, ""));
    return rows.get(thread);
  }

  function draw(call, row, begin) {
    const kind = [(call.took || call.open) && "wait", call.failed && "failed", call.fault && "fault", call.open && "open"];
    call.bar = element("i", {className: kind.filter(Boolean).join(" "), title: call.line, "data-key": call.key, call}, call.name);
    call.bar.style.setProperty("--x", begin);
    call.bar.style.setProperty("--n", edge + 1 - begin);
    call.bar.style.setProperty("--hue", (hues.find(([names]) => names.test(call.name)) || [0, 180])[1]);
    row.cells.append(call.bar);
  }

  function place(call) {
    const row = rowOf(call), last = steps.at(-1);
    if (!last || call.time > last.time) {
      if (last) edge += Math.min(6, 1 + Math.log2(call.time - last.time) / 2);
      steps.push({time: call.time, slot: edge});
      const room = edge - labelled > 4; // room for another label
      const mark = element("s", {}, !room ? "" : call.time < 10000 ? call.time + " ms" : (call.time / 1000).toFixed(3) + " s");
      if (room) labelled = edge;
      mark.style.setProperty("--x", edge);
      head.cells.append(mark);
    }
    draw(call, row, call.took ? Math.max(row.end, slotOf(call.time - call.took)) : edge);
    row.end = ++edge;
    calls.push(call);
  }

  function showOpen(lines) { // shows the calls that have not returned, at most one per thread
    for (const call of unreturned) call.bar.remove();
    unreturned = lines.map(parse).filter(Boolean);
    for (const call of unreturned) draw(call, rowOf(call), Math.max(rowOf(call).end, slotOf(call.time)));
  }

  function add(lines) { // draws them together with the lines that come soon: programs can be faster than the browser
    waiting = waiting.concat(lines).slice(-kept);
    timer = timer || setTimeout(drawWaiting, pause);
  }

  function drawWaiting() {
    const following = track.scrollLeft + track.clientWidth > track.scrollWidth - 40;
    const fresh = waiting.map(parse).filter(Boolean);
    [waiting, timer] = [[], null];
    if (calls.length + fresh.length > most) {
      const old = calls.concat(fresh).slice(-kept);
      clear();
      old.forEach(place);
    } else fresh.forEach(place);
    track.style.setProperty("--edge", edge);
    if (following) track.scrollLeft = track.scrollWidth;
    onDraw();
  }

  function choose(call) {
    if (chosen) chosen.bar.classList.remove("chosen");
    chosen = call;
    if (call) {
      call.bar.classList.add("chosen");
      call.bar.scrollIntoView({block: "nearest", inline: "center"});
    }
    onChoose(call);
  }

  function find(text) {
    const wanted = text.toLowerCase();
    track.classList.toggle("finding", wanted !== "");
    return calls.filter(call => {
      const hit = wanted !== "" && call.name.toLowerCase().includes(wanted);
      call.bar.classList.toggle("hit", hit);
      return hit;
    });
  }

  function next(step, among = calls) { // selects the next or previous call of a list
    const here = calls.indexOf(chosen), list = step > 0 ? among : among.toReversed();
    const found = list.find(call => here < 0 || (calls.indexOf(call) - here) * step > 0) || list[0];
    if (found) choose(found);
  }

  track.addEventListener("click", event => event.target.call && choose(event.target.call));
  track.addEventListener("keydown", event => {
    const step = {ArrowRight: 1, ArrowLeft: -1}[event.key];
    if (!step) return;
    event.preventDefault();
    next(step, chosen ? calls.filter(call => call.thread === chosen.thread) : calls);
  });
  clear();
  return {add, clear, showOpen, find, next};
}
