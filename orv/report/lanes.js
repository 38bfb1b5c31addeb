// The lanes of the timeline: calls as bars as long as they took, events as their density.

const laneHeight = 34;
const stateColours = ["--ok", "--failed", "--unknown"];
const stateWords = ["", "failed", "result unknown"];

// Every lane's band, from the top of the chart down, in canvas pixels.
function laneBox(chart, index) {
    const height = chart.bbox.height / data.lanes.length;
    const pad = height * 0.18;
    return { top: chart.bbox.top + index * height + pad, height: height - 2 * pad };
}

function drawDensity(chart, lane, box) {
    const context = chart.ctx;
    const most = Math.max(1, ...lane.density);
    context.fillStyle = colour(lane.failure ? "--failed" : lane.spans ? "--unknown" : "--event");
    const { min, max } = chart.scales.x;
    const last = Math.min(lane.density.length - 1, Math.floor(max / data.binMs));
    for (let bin = Math.max(0, Math.floor(min / data.binMs)); bin <= last; bin++) {
        if (lane.density[bin] === 0) continue;
        const left = chart.valToPos(bin * data.binMs, "x", true);
        const right = chart.valToPos((bin + 1) * data.binMs, "x", true);
        // A single event must still be seen beside a bin of thousands.
        const height = box.height * Math.max(0.15, Math.sqrt(lane.density[bin] / most));
        context.fillRect(left, box.top + box.height - height, Math.max(right - left, devicePixelRatio), height);
    }
}

function drawSpans(chart, lane, box) {
    const context = chart.ctx;
    const { min, max } = chart.scales.x;
    // Failed ones last, so that nothing covers them.
    for (const state of [2, 0, 1]) {
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
        if (lane.density) drawDensity(chart, lane, box);
        if (lane.spans) drawSpans(chart, lane, box);
    });
    ctx.restore();
}

// What lies under the cursor, in words.
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
    return count ? timeOfDay(bin * data.binMs, true) + "  ·  " + lane.name + ": " + count + " within " + lengthOfTime(data.binMs) : "";
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
