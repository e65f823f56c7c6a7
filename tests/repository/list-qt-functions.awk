# Reads what gcc writes with -fdump-lang-class and then what it writes with -fdump-ipa-cgraph. Prints the functions of Qt that
# functions of the project call, those that host/core/QtCompat.h calls with its name in front. Destructors are left out.

# The virtual tables, for calls through one.
/^Vtable for / { class = $3; next }
class != "" && $2 ~ /^\(int$/ && /\)[A-Za-z_:]+$/ {
    sub(/^.*\)/, "", $NF)
    virtuals[class, $1] = $NF
    next
}
/^Class / { class = "" }

# A symbol: its name, its number, and what it is in words.
/^[^ ].*\/[0-9]+ \(.*\) @0x/ {
    caller = $0
    sub(/ \(.*/, "", caller)
    symbol = caller
    sub(/^.*\//, "", symbol)
    isOurs = caller ~ /^(_ZZ?N?K?4sync|_ZZ?NK?4sync|_Z[0-9]+__static_initialization)/
    origin = caller ~ /4sync4core6compat/ ? "QtCompat.h: " : ""
    words = substr($0, index($0, "/" symbol " (") + length(symbol) + 3)
    sub(/\) @0x.*/, "", words)
    description[symbol] = words
    next
}
isOurs && /^  Calls: / {
    calls = substr($0, 10)
    while (match(calls, /\/[0-9]+ /)) {
        called[origin, substr(calls, RSTART + 1, RLENGTH - 2)] = origin
        calls = substr(calls, RSTART + RLENGTH)
    }
    next
}
isOurs && /Polymorphic indirect call of type/ {
    type = $0
    sub(/^.*struct /, "", type)
    token = type
    sub(/ .*/, "", type)
    sub(/^.*token:/, "", token)
    name = virtuals[type, 16 + 8 * (token + 0)]
    if (type ~ /^Q/) print origin "virtual " (name == "" ? type : name)
}

END {
    for (key in called) {
        split(key, parts, SUBSEP)
        function_ = description[parts[2]]
        gsub(/ \[with .*/, "", function_)
        name = function_
        gsub(/, /, ",", name)
        # From the last blank before the parameters on.
        head = name
        if (match(head, /operator\(\)/)) head = substr(head, 1, RSTART + 9)
        else sub(/\(.*/, "", head)
        if (!match(head, /operator.*$/)) match(head, /[^ ]*$/)
        else { start = RSTART; while (start > 1 && substr(head, start - 1, 1) != " ") --start; RSTART = start }
        qualified = substr(name, RSTART)
        if (qualified !~ /~/ && (qualified ~ /^(Q[A-Z]|Qt|q[A-Z])/ || qualified ~ /^operator.*Q[A-Z]/))
            print called[key] qualified
    }
}
