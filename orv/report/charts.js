const charts = [];

const colour = (name) => getComputedStyle(document.documentElement).getPropertyValue(name).trim();
const font = () => "12px system-ui, sans-serif";
const palette = ["#2f7fb8", "#d08a1d", "#3f9b63", "#a35fb8", "#c8514a", "#3aa0a6", "#8a6d3b", "#6b74c9", "#b8567f", "#7a8f2f"];

function timeAxis() {
    return {
        stroke: () => colour("--soft"),
        font: font(),
        grid: { stroke: () => colour("--line"), width: 1 },
        ticks: { stroke: () => colour("--line"), width: 1 },
        incrs: timeSteps,
        splits: timeMarks,
        space: 100,
        size: 34,
        values: timeLabels,
    };
}

let sharing = false;
function shareTime(chart, scale) {
    if (scale !== "x" || sharing) return;
    sharing = true;
    const { min, max } = chart.scales.x;
    for (const other of charts) {
        if (other !== chart) other.setScale("x", { min, max });
    }
    sharing = false;
}

function showTime(min, max) {
    const span = Math.max(data.span, 1);
    const length = Math.min(Math.max(max - min, 4), span);
    const start = Math.min(Math.max(min, 0), span - length);
    charts[0].setScale("x", { min: start, max: start + length });
}

function makeLines(place, height, series, values, unit) {
    return new uPlot(
        {
            width: place.clientWidth - 8,
            padding: [8, 26, 0, 0],
            height,
            cursor: { drag: { x: true, y: false }, sync: { key: "time" }, points: { size: 6 } },
            scales: { x: { time: false, range: (chart, min, max) => [min, max] } },
            legend: { live: true },
            axes: [
                timeAxis(),
                {
                    size: place.clientWidth < 500 ? 52 : 126,
                    stroke: () => colour("--soft"),
                    font: font(),
                    grid: { stroke: () => colour("--line"), width: 1 },
                    ticks: { show: false },
                },
            ],
            series: [{ label: "Time", value: (chart, time) => (time == null ? "" : timeOfDay(time, true)) }].concat(
                series.map((one) => ({
                    ...one,
                    value: (chart, value) => (value == null ? "" : value + " " + unit),
                })),
            ),
            hooks: { setScale: [shareTime] },
        },
        values,
        place,
    );
}

// Returns the times of the values: the middle of each bin, and the start and end of the log, so
// that all charts have the same time range.
function binTimes(width, count) {
    const span = Math.max(data.span, 1);
    const times = Array.from({ length: count }, (_, bin) => Math.min((bin + 0.5) * width, span));
    return [0, ...times, span];
}
const padded = (values) => [null, ...values, null];

const short = (name) => (name.length > 24 ? name.slice(0, 23) + "\u2026" : name);

// Returns the gaps that are much longer than the mean time between a device's values.
function longGaps(chart, device, gaps) {
    const heard = device.values.filter((value) => value !== null).length;
    const silence = Math.max(3000, (10 * data.span) / Math.max(heard, 1));
    const { min, max } = chart.scales.x;
    return gaps.filter(([from, to]) => ((to - from) / chart.bbox.width) * (max - min) > silence);
}

function makeSignal(place) {
    const series = data.signals.map((device, index) => ({
        label: short(device.name || "no name") + " " + device.address,
        stroke: palette[index % palette.length],
        width: 1.5,
        gaps: (chart, index, from, to, gaps) => longGaps(chart, device, gaps),
        points: { show: device.values.filter((value) => value !== null).length < 60, size: 4, fill: palette[index % palette.length] },
    }));
    const count = data.signals[0].values.length;
    const values = [binTimes(data.binMs, count), ...data.signals.map((device) => padded(device.values))];
    return makeLines(place, 220, series, values, "dBm");
}

function makeRate(place) {
    const perSecond = (values) => padded(values.map((bytes) => Math.round((bytes * 1000) / data.rateMs)));
    const line = (label, name) => ({
        label,
        stroke: () => colour(name),
        fill: () => colour(name) + "22",
        width: 1.5,
        points: { show: false },
    });
    return makeLines(
        place,
        180,
        [line("received", "--received"), line("sent", "--sent")],
        [binTimes(data.rateMs, data.received.length), perSecond(data.received), perSecond(data.sent)],
        "B/s",
    );
}
