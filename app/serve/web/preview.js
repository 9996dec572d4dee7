// The preview page of velto-settings serve: the device's screen to click, the journal beside
// it. Everything it does goes through the server's HTTP interface (docs/serve.md); the page
// holds no state of the session but the last page record the event stream sent.
"use strict";

const screen = document.getElementById("screen");
const caption = document.getElementById("caption");
const status = document.getElementById("status");
const journal = document.getElementById("journal");
const deviceMenu = document.getElementById("device");
const picker = document.getElementById("picker");
const picture = document.getElementById("picture");
const originalOnly = document.getElementById("original-only");

let page = null;       // the last page record
let size = null;       // the screen's size in points
let pictures = 0;      // how many times the screen was redrawn
let busy = false;      // a request that acts is on its way

function say(message) {
  status.textContent = message || "";
}

// A POST to the interface; errors of its steps are said in the header.
async function post(path, body) {
  busy = true;
  try {
    const form = body instanceof FormData;
    const response = await fetch(path, {
      method: "POST",
      body: form ? body : JSON.stringify(body),
      headers: form ? {} : { "Content-Type": "application/json" },
    });
    const answer = await response.json().catch(() => ({}));
    const errors = (answer.records || []).filter((record) => record.type === "error");
    say(answer.error || errors.map((record) => record.error).join("; "));
    return answer;
  } catch (error) {
    say("the server does not answer: " + error.message);
    return null;
  } finally {
    busy = false;
  }
}

async function loadDevices() {
  const answer = await (await fetch("/api/devices")).json();
  size = answer.screen;
  deviceMenu.replaceChildren(...answer.devices.map((device) => {
    const option = new Option(device.path, device.index, false, device.current);
    option.title = device.path;
    return option;
  }));
}

// Where a mouse event lands on the device's screen, in points.
function pointOf(event) {
  if (!size) return null;
  const box = screen.getBoundingClientRect();
  return {
    x: ((event.clientX - box.left) * size.width) / box.width,
    y: ((event.clientY - box.top) * size.height) / box.height,
  };
}

function inside(frame, point) {
  const [x, y, width, height] = frame;
  return point.x >= x && point.x < x + width && point.y >= y && point.y < y + height;
}

function acts(row) {
  return row.cell !== "PSGroupCell" && (row.value !== null || row.detail || row.action);
}

function describe(entry) {
  switch (entry.kind) {
    case "preference-write":
      return `write ${entry.domain} ${entry.key} = ${JSON.stringify(entry.value)}`;
    case "preference-write-refused":
      return `write refused ${entry.domain} ${entry.key}: ${entry.cause}`;
    case "notification":
      return `notify ${entry.name}`;
    case "local-notification":
      return `post ${entry.name}`;
    case "request":
      return `request ${entry.name} (${entry.replied ? "replied" : "no reply"})`;
    case "log":
      return `log ${entry.text}`;
    case "shell":
      return `shell ${entry.command}`;
    case "navigation":
      return `${entry.action} ${entry.class}`;
    case "present":
      return `present ${entry.class} ${entry.title}`;
    case "dismiss":
      return `dismiss ${entry.class} (${entry.how})`;
    case "insert":
    case "remove":
    case "reload":
      return `${entry.kind} ${entry.index === null ? "all rows" : "#" + entry.index}`;
    default:
      return entry.kind;
  }
}

function addLine(text, kind) {
  // A run of the same entry (an icon request per application) is one line with a count.
  const last = journal.lastElementChild;
  if (last && last.dataset.text === text && last.className === kind) {
    last.dataset.count = Number(last.dataset.count) + 1;
    last.textContent = `${text} ×${last.dataset.count}`;
    return;
  }
  const line = document.createElement("li");
  line.dataset.text = text;
  line.dataset.count = 1;
  line.className = kind;
  line.textContent = text;
  journal.append(line);
  line.scrollIntoView({ block: "end" });
}

function showPage(record) {
  page = record;
  screen.src = "/api/screenshot.png?picture=" + ++pictures;
  const title = record.title ? record.title + " · " : "";
  caption.textContent = `${title}${record.page} · depth ${record.depth}`;
  document.body.dataset.page = record.page;
  picker.hidden = !(record.presented && record.presented.kind === "picker");
  if (record.journal.length) addLine(caption.textContent, "page");
  for (const entry of record.journal) addLine(describe(entry), entry.kind);
}

screen.addEventListener("click", async (event) => {
  const point = pointOf(event);
  if (!point) return;
  const answer = await post("/api/tap", point);
  // A tap inside the photo picker chooses a photo: the file chooser stands for the library.
  if (answer && answer.step === null && page && page.presented &&
      page.presented.kind === "picker")
    picture.click();
});

screen.addEventListener("mousemove", (event) => {
  const point = pointOf(event);
  const row = point && page && !page.presented &&
    page.rows.find((row) => row.frame && inside(row.frame, point));
  screen.classList.toggle("pointing", Boolean(row && acts(row)));
});

// The wheel scrolls the page a row at a time, as far as the `scroll` step brings it.
screen.addEventListener("wheel", (event) => {
  event.preventDefault();
  if (busy || !page || page.presented) return;
  const rows = page.rows.filter((row) => row.cell !== "PSGroupCell");
  const shown = rows.filter((row) => row.frame);
  if (!shown.length) return;
  const target = event.deltaY > 0
    ? rows.find((row) => row.index > shown[shown.length - 1].index) || shown[shown.length - 1]
    : rows.filter((row) => row.index < shown[0].index).pop() || shown[0];
  post("/api/steps", { steps: ["scroll #" + target.index] });
}, { passive: false });

picture.addEventListener("change", async () => {
  if (!picture.files.length) return;
  const form = new FormData();
  form.append("picture", picture.files[0]);
  if (originalOnly.checked) form.append("original-only", "true");
  await post("/api/pick", form);
  picture.value = "";
});

deviceMenu.addEventListener("change", async () => {
  await post("/api/device", { device: Number(deviceMenu.value) });
});

document.getElementById("clear").addEventListener("click", () => journal.replaceChildren());

const events = new EventSource("/api/events");
events.addEventListener("page", (event) => showPage(JSON.parse(event.data)));
events.addEventListener("record", (event) => {
  const record = JSON.parse(event.data);
  addLine((record.error || record.note || "").trimEnd(), record.type);
});
events.addEventListener("devices", loadDevices);
events.addEventListener("open", () => say(""));
events.addEventListener("error", () => say("the server has gone; reconnecting…"));

loadDevices();
