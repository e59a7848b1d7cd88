# Prints the table of one area, from -v times=CSV (the benchmarks' output) and the ratios asked for, and writes
# "reached rows limited" to -v counts=FILE. Columns of a ratio: label | bound | dividend | divisor | frames | limit.

function trim(text) {
    gsub(/^[ \t]+|[ \t]+$/, "", text)
    return text
}

function fail(text) {
    printf "bench/run: error: %s\n", text > "/dev/stderr"
    failed = 1
    exit 2
}

# "name_median",iterations,real_time,cpu_time,...
# A case that asks for real or manual time has it in its name: processor time says nothing of a thread that
# sleeps.
function readTimes(    line, field, name) {
    while ((getline line < times) > 0) {
        split(line, field, ",")
        name = field[1]
        gsub(/"/, "", name)
        if (sub(/_median$/, "", name)) {
            median[name] = name ~ /\/(real|manual)_time$/ ? field[3] : field[4]
        }
    }
    close(times)
}

function timeOf(name) {
    if (!(name in median) || median[name] + 0 <= 0) {
        fail("no time was measured for " name)
    }
    return median[name]
}

# "at most N ns more" bounds the difference of two times.
function holds(bound, first, second,    words) {
    split(bound, words, " ")
    if (bound ~ /^at most [0-9]+(\.[0-9]+)? ns more$/) {
        return first - second <= words[3] + 0
    }
    if (bound !~ /^at (least|most) [0-9]+(\.[0-9]+)?$/) {
        fail("'" bound "' is no bound")
    }
    return words[2] == "least" ? first / second >= words[3] + 0 : first / second <= words[3] + 0
}

# A bound that memory alone makes unreachable counts as reached near that limit, and is shown as such.
function verdict(bound, first, second, limit, frames,    part) {
    if (bound == "-") {
        return "-"
    }
    rows += 1
    if (holds(bound, first, second)) {
        reached += 1
        return "yes"
    }
    if (limit != "") {
        split(limit, part, " ")
        if (second <= part[2] * timeOf(part[1] "/" frames)) {
            reached += 1
            limited += 1
            return "at its limit"
        }
    }
    return "NO"
}

function row(label, bound, dividend, divisor, limit, frames,    first, second) {
    first = timeOf(dividend)
    second = timeOf(divisor)
    printf "| %s | %.0f | %.0f | %.2f | %s | %s |\n", label, first, second, first / second, bound,
           verdict(bound, first, second, limit, frames)
}

BEGIN {
    readTimes()
    printf "\n### %s\n\n", area
    print "| Work | ns | beside, ns | quotient | bound | reached |"
    print "|---|---|---|---|---|---|"
}

/^#/ || NF == 0 { next }

{
    count = split($0, column, "|")
    if (count != 5 && count != 6) {
        fail("line " FNR " of the ratios has " count " columns")
    }
    for (i = 1; i <= count; ++i) {
        column[i] = trim(column[i])
    }
    limit = count == 6 ? column[6] : ""
    if (column[5] == "-") {
        row(column[1], column[2], column[3], column[4], limit, "")
        next
    }
    lengths = split(column[5], frames, " ")
    for (i = 1; i <= lengths; ++i) {
        row(column[1] ", " frames[i] " frames", column[2], column[3] "/" frames[i], column[4] "/" frames[i], limit,
            frames[i])
    }
}

END {
    if (!failed) {
        print reached + 0, rows + 0, limited + 0 > counts
    }
}
