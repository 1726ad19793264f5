"use strict";

// Everything on the page below the losses is drawn from two objects that stand in it: what --json prints, and what
// was gathered while the run went.
const run = JSON.parse(document.getElementById("run").textContent);
const watched = JSON.parse(document.getElementById("watched").textContent);

function element(name, text, className) {
    const made = document.createElement(name);
    if (text !== undefined) made.textContent = text;
    if (className) made.className = className;
    return made;
}

function table(head, rows) {
    const made = element("table");
    const addRow = (cells, kind) => {
        const row = made.appendChild(element("tr"));
        for (const cell of cells) {
            const isNumber = typeof cell === "number";
            row.appendChild(cell instanceof Node ? cell : element(kind, cell, isNumber ? "number" : ""));
        }
    };
    if (head.length) addRow(head, "th");
    for (const row of rows) addRow(row, "td");
    return made;
}

// --- facts ---------------------------------------------------------------------------------------

function facts(object, leaveOut) {
    const rows = Object.entries(object).filter(([key]) => !leaveOut.includes(key)).map(([key, value]) => {
        const cell = element("td", value === null ? "none" : String(value), "number");
        cell.dataset.key = key;
        return [key, cell];
    });
    return table([], rows);
}

function showFacts() {
    const place = document.getElementById("facts");
    const tables = place.appendChild(element("div", undefined, "tables"));
    for (const stream of run.streams) tables.appendChild(facts(stream, []));
    tables.appendChild(facts(run, ["streams", "losses", "problem"]));
}

// --- charts --------------------------------------------------------------------------------------

const charts = [];

function colour(name) {
    return getComputedStyle(document.documentElement).getPropertyValue("--" + name).trim();
}

// One step of the wheel shows four fifths of what was seen, or five fourths, around the pointer.
function zoomByWheel(event, chart) {
    const [from, to] = chart.xAxisRange();
    const [first, last] = chart.xAxisExtremes();
    const centre = chart.toDataXCoord(event.offsetX);
    const factor = event.deltaY < 0 ? 0.8 : 1.25;
    const left = Math.max(first, centre - (centre - from) * factor);
    const right = Math.min(last, centre + (to - centre) * factor);
    chart.updateOptions({dateWindow: left <= first && right >= last ? null : [left, right]});
    event.preventDefault();
}

// `colours` are names of the style's. `group`: charts that are zoomed together.
function addChart(place, title, rows, colours, options, group) {
    place.appendChild(element("h4", title));
    const div = place.appendChild(element("div", undefined, "chart"));
    const legend = place.appendChild(element("div", undefined, "legend"));
    if (rows.length < 2) {
        div.remove();
        legend.textContent = "too short for a picture";
        return;
    }
    const chart = new Dygraph(div, rows, Object.assign({
        colors: colours.map(colour), labelsDiv: legend, legend: "always", strokeWidth: 1,
        axisLineColor: colour("line"), gridLineColor: colour("line"), connectSeparatedPoints: true,
        highlightCircleSize: 2, maxNumberWidth: 12,
        interactionModel: Object.assign({}, Dygraph.defaultInteractionModel, {wheel: zoomByWheel}),
    }, options));
    charts.push({chart, colours});
    if (group) joinGroup(chart, group);
}

function joinGroup(chart, group) {
    group.push(chart);
    chart.updateOptions({drawCallback: (drawn) => {
        const here = drawn.xAxisRange();
        for (const other of group) {
            const there = other.xAxisRange();
            if (there[0] !== here[0] || there[1] !== here[1]) {
                other.updateOptions({dateWindow: drawn.isZoomed("x") ? here : null});
            }
        }
    }});
}

matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => {
    for (const {chart, colours} of charts) {
        chart.updateOptions({colors: colours.map(colour), axisLineColor: colour("line"),
                             gridLineColor: colour("line")});
    }
});

// --- streams -------------------------------------------------------------------------------------

const FULL_SCALE = 32768;
const SIDES = ["left", "right"];

function band(bounds) {
    if (!bounds) return [null, null, null];
    const [least, most] = bounds.map((bound) => bound / FULL_SCALE);
    return [least, (least + most) / 2, most];
}

function decibels(value) {
    return value > 0 ? 20 * Math.log10(value) : null;
}

function peak(bounds) {
    return bounds ? Math.max(-bounds[0], bounds[1]) / FULL_SCALE : 0;
}

// Differences as bands, gaps as dashed lines.
function markFaults(stream) {
    const wave = stream.wave;
    const width = wave["frames-per-column"];
    return (canvas, area, chart) => {
        canvas.fillStyle = colour("mark");
        wave.different.forEach((count, column) => {
            if (!count) return;
            const left = chart.toDomXCoord(column * width), right = chart.toDomXCoord((column + 1) * width);
            canvas.fillRect(left, area.y, Math.max(2, right - left), area.h);
        });
        canvas.strokeStyle = colour("bad");
        canvas.setLineDash([4, 3]);
        for (const gap of stream.gaps) {
            const at = chart.toDomXCoord(gap.frame);
            canvas.beginPath();
            canvas.moveTo(at, area.y);
            canvas.lineTo(at, area.y + area.h);
            canvas.stroke();
        }
        canvas.setLineDash([]);
    };
}

function describeGaps(stream) {
    if (stream.gaps.length === 0) return "";
    const gaps = stream.gaps.map((gap) => gap.length + (gap.length === 1 ? " frame" : " frames") + " at frame " +
                                          gap.frame);
    return " The card had no buffer for " + gaps.slice(0, 10).join(", for ") + (gaps.length > 10 ? ", ..." : ".");
}

function describeDifferences(wave) {
    if (!wave.compared) return "There is nothing that it could be compared with.";
    if (wave.differences === 0) return "What came is what was asked for, to the last bit.";
    return wave.differences + (wave.differences === 1 ? " frame is" : " frames are") +
        " not as asked for, the first at frame " + wave["first-difference"] + ".";
}

function showWave(place, stream, group) {
    const wave = stream.wave;
    const width = wave["frames-per-column"];
    const came = stream.kind === "playing" ? "played" : "recorded";
    wave.came.forEach((columns, side) => {
        const rows = columns.map((bounds, column) =>
            wave.compared ? [column * width, band(wave.asked[side][column]), band(bounds)]
                          : [column * width, band(bounds)]);
        const name = wave.came.length === 1 ? "Waveform" : "Waveform, " + SIDES[side];
        addChart(place, name, rows, wave.compared ? ["asked", "came"] : ["came"], {
            labels: wave.compared ? ["frame", "asked for", came] : ["frame", came],
            customBars: true, connectSeparatedPoints: false, fillAlpha: 0.45, strokeWidth: width === 1 ? 1 : 0.3, valueRange: [-1.05, 1.05],
            underlayCallback: markFaults(stream),
        }, group);
    });
}

// Sample by sample, around the first difference.
function showCloseUp(place, stream) {
    const closeUp = stream.wave["close-up"];
    if (!closeUp) return;
    const came = stream.kind === "playing" ? "played" : "recorded";
    const scaled = (sample) => sample === null ? null : sample / 2 ** 31;
    closeUp.came.forEach((samples, side) => {
        const rows = samples.map((sample, at) =>
            [closeUp.first + at, scaled(closeUp.asked[side][at]), scaled(sample)]);
        const name = "Around the first difference" + (closeUp.came.length === 1 ? "" : ", " + SIDES[side]);
        addChart(place, name, rows, ["asked", "came"], {
            labels: ["frame", "asked for", came], connectSeparatedPoints: false, drawPoints: true, pointSize: 1.5,
            digitsAfterDecimal: 6,
        });
    });
}

function showLevel(place, stream, group) {
    const wave = stream.wave;
    const width = wave["frames-per-column"];
    const rows = wave.different.map((_, column) => [
        column * width, decibels(Math.max(...wave.came.map((side) => peak(side[column])))),
        ...wave.level.map((side) => side[column])]);
    const sides = wave.level.length === 1 ? ["mean"] : ["mean left", "mean right"];
    addChart(place, "Level, dB of full scale", rows, ["came", "asked", "third"], {
        labels: ["frame", "peak", ...sides], digitsAfterDecimal: 1,
    }, group);
}

function showSpectrum(place, stream) {
    const wave = stream.wave;
    const spectra = wave.compared ? [wave["asked-spectrum"], wave["came-spectrum"]] : [wave["came-spectrum"]];
    const bands = Math.max(...spectra.map((spectrum) => spectrum.length));
    const rows = [];
    for (let at = 0; at < bands; ++at) {
        rows.push([(at + 0.5) * stream.rate / 2 / bands, ...spectra.map((spectrum) => spectrum[at] ?? null)]);
    }
    const came = stream.kind === "playing" ? "played" : "recorded";
    addChart(place, "Mean spectrum, dB over Hz", rows, wave.compared ? ["asked", "came"] : ["came"], {
        labels: wave.compared ? ["Hz", "asked for", came] : ["Hz", came], axes: {x: {logscale: true}},
        digitsAfterDecimal: 1,
    });
}

function showInFlight(place, stream) {
    const rows = [];
    stream["in-flight"].forEach((bounds, column) => {
        if (bounds) rows.push([column * stream["ms-per-column"] / 1000, ...bounds]);
    });
    addChart(place, "Buffers in flight, over seconds of the cards' time", rows, ["came", "asked"], {
        labels: ["seconds", "fewest", "most"], stepPlot: true, includeZero: true,
    });
}

function showStreams() {
    const place = document.getElementById("streams");
    for (const stream of watched.streams) {
        const group = [];
        place.appendChild(element("h3", stream.name + ", " + stream.kind + ": " + stream.format));
        place.appendChild(element("p", describeDifferences(stream.wave) + describeGaps(stream)));
        showWave(place, stream, group);
        showCloseUp(place, stream);
        showLevel(place, stream, group);
        showSpectrum(place, stream);
        showInFlight(place, stream);
    }
}

// --- cards ---------------------------------------------------------------------------------------

function describeClock(card) {
    const name = "Card " + card.card + ": ";
    if (!card.clock) return name + "its clock was not asked for";
    const changes = card["clock-changes"];
    const now = changes[changes.length - 1].rate;
    const history = changes.length < 2 ? "" :
        " (" + changes.map(({ms, rate}) => (rate || "none") + " from " + ms + " ms").join(", ") + ")";
    return name + card.clock.source + (card.clock["drives-link"] ? ", drives the link" : "") + ", " +
        (now ? now + " Hz, locked" : "no lock") + history;
}

// Who follows the link hangs below who drives it.
function showClocks() {
    const top = document.getElementById("clocks").appendChild(element("ul"));
    const driver = watched.cards.find((card) => card.clock && card.clock["drives-link"]);
    const follows = (card) => driver && card !== driver && card.clock && card.clock.source === "link";
    for (const card of watched.cards.filter((card) => !follows(card))) {
        const item = top.appendChild(element("li", describeClock(card)));
        const followers = card === driver ? watched.cards.filter(follows) : [];
        if (followers.length) {
            const list = item.appendChild(element("ul"));
            for (const follower of followers) list.appendChild(element("li", describeClock(follower)));
        }
    }
}

function showRequests() {
    const rows = [...watched.requests].sort((one, other) => other.total - one.total || other.count - one.count);
    document.getElementById("requests").appendChild(table(
        ["request", "count", "failed", "total µs", "longest µs"],
        rows.map((row) => [row.name, row.count, row.failed, row.total, row.longest])));
}

function hex(value) {
    return value.toString(16).toUpperCase().padStart(2, "0");
}

// Its fields, or those of them that differ from `before`.
function registerCell(value, before) {
    const fields = value.fields.filter((field, at) => !before || field.value !== before.fields[at].value);
    const text = hex(value.value) + fields.map((field) => ", " + field.name + " " + field.value).join("");
    return element("td", text, before && before.value !== value.value ? "changed" : "");
}

function showRegisters() {
    const place = document.getElementById("registers");
    for (const card of watched.cards) {
        place.appendChild(element("h3", "Card " + card.card));
        place.appendChild(card.registers.length === 0 ? element("p", "None.") : table(
            ["register", "name", "before the run", "while it ran", "after it"],
            card.registers.map((row) => [
                row.file + " " + row.index, row.name, registerCell(row.before),
                registerCell(row.running, row.before), registerCell(row.after, row.before)])));
    }
}

showFacts();
showStreams();
showClocks();
showRequests();
showRegisters();
