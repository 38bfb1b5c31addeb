// The lanes of the timeline. A call's bar is as long as the call; the height of an event bar shows
// the number of events.

const laneHeight = 34;
const stateColours = ["--ok", "--failed", "--unknown"];
const stateWords = ["", "failed", "result unknown"];

// Returns the area of a lane in canvas pixels. Lane 0 is at the top.
function laneBox(chart, index) {
    const height = chart.bbox.height / data.lanes.length;
    const pad = height * 0.18;
    return { top: chart.bbox.top + index * height + pad, height: height - 2 * pad };
}

// Draws a bar for each bin of `counts`. The bin of `lane` with the most events has the full height.
function drawDensity(chart, lane, box, counts, fill) {
    const context = chart.ctx;
    const most = Math.max(1, ...lane.density);
    context.fillStyle = colour(fill);
    const { min, max } = chart.scales.x;
    const last = Math.min(counts.length - 1, Math.floor(max / data.binMs));
    for (let bin = Math.max(0, Math.floor(min / data.binMs)); bin <= last; bin++) {
        if (counts[bin] === 0) continue;
        // Rounds to whole pixels, so that the colours of stacked bars do not mix.
        const left = Math.floor(chart.valToPos(bin * data.binMs, "x", true));
        const right = Math.ceil(chart.valToPos((bin + 1) * data.binMs, "x", true));
        // A minimum height keeps a single event visible beside a bin of thousands.
        const height = box.height * Math.max(0.15, Math.sqrt(counts[bin] / most));
        context.fillRect(left, box.top + box.height - height, Math.max(right - left, Math.ceil(devicePixelRatio)), height);
    }
}

function drawSpans(chart, lane, box, states) {
    const context = chart.ctx;
    const { min, max } = chart.scales.x;
    for (const state of states) {
        context.fillStyle = colour(stateColours[state]);
        for (const [start, length, itsState] of lane.spans) {
            if (itsState !== state || start > max || start + length < min) continue;
            const left = chart.valToPos(Math.max(start, min), "x", true);
            const right = chart.valToPos(Math.min(start + length, max), "x", true);
            context.globalAlpha = state === 2 && length > 0 ? 0.45 : 1;
            context.fillRect(left, box.top, Math.max(right - left, 2 * devicePixelRatio), box.height);
        }
    }
    context.globalAlpha = 1;
}

function drawLanes(chart) {
    const { ctx, bbox } = chart;
    ctx.save();
    ctx.beginPath();
    ctx.rect(bbox.left, bbox.top, bbox.width, bbox.height);
    ctx.clip();
    data.lanes.forEach((lane, index) => {
        const box = laneBox(chart, index);
        if (!lane.spans) {
            drawDensity(chart, lane, box, lane.density, lane.failure ? "--failed" : "--event");
            return;
        }
        // Draws failed calls last, so nothing covers them.
        if (lane.density) {
            drawDensity(chart, lane, box, lane.density, "--ok");
            drawDensity(chart, lane, box, lane.unknown, "--unknown");
        }
        drawSpans(chart, lane, box, [2, 0]);
        if (lane.density) drawDensity(chart, lane, box, lane.failed, "--failed");
        drawSpans(chart, lane, box, [1]);
    });
    ctx.restore();
}

function wordsAt(chart, left, top) {
    const index = Math.floor((top / chart.over.clientHeight) * data.lanes.length);
    const lane = data.lanes[index];
    if (!lane || left < 0) return "";
    const time = chart.posToVal(left, "x");
    const reach = chart.posToVal(left + 4, "x") - time;
    const spans = (lane.spans || []).filter(([start, length]) => start - reach <= time && time <= start + length + reach);
    const [start, length, state, words] = spans.find((span) => span[2] === 1) || spans[spans.length - 1] || [];
    if (words !== undefined) {
        const took = length > 0 ? (state === 2 ? "at most " : "") + lengthOfTime(length) : "";
        const more = spans.length > 1 ? "and " + (spans.length - 1) + " more" : "";
        return [timeOfDay(start, true), words, stateWords[state], took, more].filter(Boolean).join("  ·  ");
    }
    const bin = Math.floor(time / data.binMs);
    const count = lane.density && lane.density[bin];
    if (!count) return "";
    const failed = lane.failed && lane.failed[bin] ? ", " + lane.failed[bin] + " failed" : "";
    return timeOfDay(bin * data.binMs, true) + "  ·  " + lane.name + ": " + count + " within " + lengthOfTime(data.binMs) + failed;
}

// States how many calls have a bar of their own.
function fillMerged() {
    const step = lengthOfTime(data.binMs);
    const merged = data.lanes
        .filter((lane) => lane.spans && lane.density)
        .map((lane) => `${lane.name}: ${number(lane.count)} calls, ${number(lane.spans.length)} of them drawn one by one`);
    document.getElementById("merged").textContent = merged.length === 0 ? "" :
        `${merged.join("; ")}. All are counted in steps of ${step}, and a step in which a call failed is red.`;
}

function makeLanes(place) {
    const names = data.lanes.map((lane) => lane.name);
    const narrow = place.clientWidth < 500;
    return new uPlot(
        {
            width: place.clientWidth - 8,
            padding: [8, 26, 0, 0],
            height: laneHeight * names.length + 40,
            legend: { show: false },
            cursor: { y: false, points: { show: false }, drag: { x: true, y: false }, sync: { key: "time" } },
            scales: { x: { time: false }, y: { range: [0, names.length] } },
            axes: [
                timeAxis(),
                {
                    side: 3,
                    size: narrow ? 104 : 126,
                    gap: 8,
                    stroke: () => colour("--soft"),
                    font: font(),
                    grid: { show: false },
                    ticks: { show: false },
                    splits: () => names.map((name, index) => names.length - index - 0.5),
                    values: () => names,
                },
            ],
            series: [{}, { show: false }],
            hooks: {
                draw: [drawLanes],
                setCursor: [
                    (chart) => {
                        const words = wordsAt(chart, chart.cursor.left, chart.cursor.top);
                        document.getElementById("under-cursor").textContent = words;
                    },
                ],
                setScale: [shareTime],
            },
        },
        [[0, Math.max(data.span, 1)], [null, null]],
        place,
    );
}
