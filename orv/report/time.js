// Times are milliseconds since the first line of the log. The page shows them as time of day.

const two = (number) => String(number).padStart(2, "0");

function timeOfDay(ms, withMs) {
    const day = 24 * 3600 * 1000;
    const time = (((Math.round(ms) + data.firstStamp) % day) + day) % day;
    const seconds = Math.floor(time / 1000);
    const text =
        two(Math.floor(seconds / 3600)) + ":" + two(Math.floor(seconds / 60) % 60) + ":" + two(seconds % 60);
    return withMs ? text + "." + String(time % 1000).padStart(3, "0") : text;
}

// Returns a text such as "2.5 s" or "3 min 20 s".
function lengthOfTime(ms) {
    if (ms < 1000) return ms + " ms";
    if (ms < 60000) return (ms / 1000).toFixed(1) + " s";
    const minutes = Math.floor(ms / 60000);
    return minutes < 60
        ? minutes + " min " + Math.floor((ms / 1000) % 60) + " s"
        : Math.floor(minutes / 60) + " h " + (minutes % 60) + " min";
}

// Returns the labels of a time axis, with milliseconds if the marks are closer than a second.
function timeLabels(chart, marks, axis, space, step) {
    return marks.map((mark) => timeOfDay(mark, step < 1000));
}

// Returns the marks of a time axis, at round times of day.
function timeMarks(chart, axis, min, max, step) {
    const marks = [];
    const first = Math.ceil((min + data.firstStamp) / step) * step - data.firstStamp;
    for (let mark = first; mark <= max; mark += step) marks.push(mark);
    return marks;
}

// Possible distances between marks of a time axis, in ms.
const timeSteps = [1, 2, 5, 10, 20, 50, 100, 200, 500].concat(
    [1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 14400, 28800, 86400].map((s) => s * 1000),
    [2, 5, 10, 20, 50, 100].map((days) => days * 86400000),
);
