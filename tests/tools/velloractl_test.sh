#!/bin/sh
# Runs velloractl against a temporary home and checks the drive it leaves on disk.
set -u
V="$1"
WORK=$(mktemp -d "${TMPDIR:-/tmp}/velloractl-test-XXXXXX")
trap 'rm -rf "$WORK"' EXIT
export VELLORA_HOME="$WORK/home" XDG_STATE_HOME="$WORK/state" XDG_CONFIG_HOME="$WORK/config"
unset VELLORACTL_VERBOSE
H="$VELLORA_HOME"
failures=0

fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
check() { desc="$1"; shift; "$@" || fail "$desc"; }

# Runs velloractl, keeping its exit status in $rc and its standard error in $WORK/err.
run() { "$V" "$@" >"$WORK/out" 2>"$WORK/err"; rc=$?; }

# An error is exactly one "velloractl: ..." line on standard error with the given exit status.
expect_error() {
    want="$1"; shift
    run "$@"
    [ "$rc" = "$want" ] || fail "velloractl $* exited $rc, wanted $want"
    lines=$(wc -l <"$WORK/err")
    [ "$lines" = 1 ] || fail "velloractl $* wrote $lines lines on stderr: $(cat "$WORK/err")"
    grep -q '^velloractl: ' "$WORK/err" || fail "velloractl $* error line: $(cat "$WORK/err")"
}

# --- seed-demo ---
run seed-demo
check "seed-demo succeeds ($(cat "$WORK/err"))" [ "$rc" = 0 ]
check "four container records" [ "$(ls "$H/containers" | wc -l)" = 4 ]
for levels in none one any; do
    check "an app library with folder levels $levels" \
        grep -lq "\"folderLevels\": *\"$levels\"" $(grep -L '"default": *true' "$H"/containers/*.json)
done
big="$H/cloud/Videos/Documentary (Full Length).avi"
check "the large cloud-only item has a placeholder" \
    [ -f "$H/drive/Videos/.Documentary (Full Length).avi.vlcloud" ]
check "the large cloud-only item is not local" [ ! -e "$H/drive/Videos/Documentary (Full Length).avi" ]
size=$(stat -c %s "$big")
blocks_kib=$(du -k "$big" | cut -f1)
check "the large cloud copy is over 100 MiB ($size)" [ "$size" -gt 104857600 ]
check "the large cloud copy is sparse (${blocks_kib} KiB on disk)" [ "$blocks_kib" -lt 10240 ]
check "the tag dictionary is version 2" grep -q '"CurioTagDictVersion": *2' "$H/kvstore.json"
check "the tag dictionary has tags" grep -q '"CurioTags"' "$H/kvstore.json"
check "a document reference" [ -f "$H/drive/Quarterly Report.vlref" ]
check "the PDF is local" [ -s "$H/drive/Documents/Quarterly Report.pdf" ]
check "the account exists" [ -f "$H/account.json" ]
expect_error 1 seed-demo
run seed-demo --force
check "seed-demo --force replaces the drive" [ "$rc" = 0 ]

# --- import and evict ---
printf 'first version\n' >"$WORK/note.txt"
run import "$WORK/note.txt" Documents/
check "import into a folder succeeds" [ "$rc" = 0 ]
check "the imported file is local" cmp -s "$WORK/note.txt" "$H/drive/Documents/note.txt"
check "the imported file is in the cloud" cmp -s "$WORK/note.txt" "$H/cloud/Documents/note.txt"
run import "$WORK/note.txt" "New Folder/cloud note.txt" --cloud-only
check "a cloud-only import succeeds" [ "$rc" = 0 ]
check "a cloud-only import leaves a placeholder" [ -f "$H/drive/New Folder/.cloud note.txt.vlcloud" ]
check "a cloud-only import leaves no local copy" [ ! -e "$H/drive/New Folder/cloud note.txt" ]
expect_error 1 import "$WORK/note.txt" Documents/note.txt
expect_error 1 import "$WORK/missing.txt" Documents/
run evict Documents/note.txt
check "evict succeeds" [ "$rc" = 0 ]
check "evict removes the local copy" [ ! -e "$H/drive/Documents/note.txt" ]
check "evict leaves a placeholder" [ -f "$H/drive/Documents/.note.txt.vlcloud" ]
check "evict keeps the cloud copy" cmp -s "$WORK/note.txt" "$H/cloud/Documents/note.txt"
expect_error 1 evict Documents/nothing-here.txt

# --- remote changes ---
run remote rename "Documents/Reading List.md" "Books.md"
check "remote rename succeeds" [ "$rc" = 0 ]
check "remote rename renames the local copy" [ -f "$H/drive/Documents/Books.md" ]
check "remote rename renames the cloud copy" [ -f "$H/cloud/Documents/Books.md" ]
check "remote rename leaves no old name" [ ! -e "$H/drive/Documents/Reading List.md" ]
run remote rename Documents/note.txt renamed.txt
check "remote rename of a cloud-only item moves its placeholder" \
    [ -f "$H/drive/Documents/.renamed.txt.vlcloud" ]
run remote move Documents/Books.md Work
check "remote move moves the item" [ -f "$H/drive/Work/Books.md" ]
run remote modify Work/Books.md --text "rewritten"
check "remote modify changes the local copy" grep -qx rewritten "$H/drive/Work/Books.md"
check "remote modify changes the cloud copy" grep -qx rewritten "$H/cloud/Work/Books.md"
run remote delete Work/Books.md
check "remote delete removes the local copy" [ ! -e "$H/drive/Work/Books.md" ]
check "remote delete removes the cloud copy" [ ! -e "$H/cloud/Work/Books.md" ]
expect_error 2 remote rename Work/Projects/Roadmap.md "bad/name"
expect_error 2 remote explode Work

# --- settings, account, tags, containers ---
run network cellular
check "network writes the override" grep -q '"network": *"cellular"' "$H/service.json"
printf '{"network": ' >"$H/service.json"
run network wifi
check "network over an unreadable record succeeds" [ "$rc" = 0 ]
check "the unreadable record is kept aside" grep -qx '{"network": ' "$H"/service.json.corrupt-*
check "and reported" grep -q 'kept aside as .*service.json.corrupt-' "$WORK/err"
run throttle 65536
check "throttle writes the bandwidth" grep -q '"throttleBytesPerSecond": *65536' "$H/service.json"
run quota 1000
check "quota writes the free bytes" grep -q '"freeBytes": *1000' "$H/account.json"
run signout
check "signout removes the account" [ ! -e "$H/account.json" ]
expect_error 1 quota 5
run signin someone@example.com
check "signin writes the account" grep -q 'someone@example.com' "$H/account.json"
run tags set Red=red Blue=4
check "tags set writes the colours" grep -q '"l": *4' "$H/kvstore.json"
run tags add Welcome.md Red
check "tags add succeeds" [ "$rc" = 0 ]
run tags clear
check "tags clear removes the dictionary" sh -c "! grep -q CurioTagDict '$H/kvstore.json'"
run container add com.example.Sketch --name Sketch --levels one --types public.image,image/png
check "container add writes a record" [ -f "$H/containers/com.example.Sketch.json" ]
check "container add makes its folder" [ -d "$H/drive/Sketch" ]
expect_error 1 container add com.example.Sketch --name Again
expect_error 2 container add com.example.Other --name Other --levels many
run status
check "status succeeds" [ "$rc" = 0 ]
check "status names the account" grep -q 'someone@example.com' "$WORK/out"
check "status counts an app library's items here and in the cloud" \
    grep -q '^    contents: 0 items here, 0 in the cloud$' "$WORK/out"
run status --items
check "status --items lists a local item" \
    grep -qx '  Documents/Quarterly Report.pdf: here and in the cloud' "$WORK/out"
check "status --items lists a cloud-only item" \
    grep -qx '  Videos/Documentary (Full Length).avi: cloud-only' "$WORK/out"

# --- usage errors ---
expect_error 2 frobnicate
expect_error 2 network sideways
expect_error 2 quota lots
expect_error 2 throttle -5
expect_error 2 import onlyone
expect_error 2
run --help
check "--help succeeds" [ "$rc" = 0 ]
check "--help lists seed-demo" grep -q 'seed-demo' "$WORK/out"

# --- a kill at any step of a write path leaves every item reachable ---
# The item's content, local or (for a cloud-only item) its cloud copy, under the first name that
# has it; "none" when no name does.
content_of() {
    for name in "$@"; do
        if [ -f "$CH/drive/$name" ]; then cat "$CH/drive/$name"; return; fi
        if [ -f "$CH/drive/.$name.vlcloud" ] && [ -f "$CH/cloud/$name" ]; then
            cat "$CH/cloud/$name"; return
        fi
    done
    echo none
}
printf 'old text' >"$WORK/old.txt"
for op in evict modify rename import; do
    step=1
    while [ "$step" -lt 100 ]; do
        CH="$WORK/crash-$op-$step"
        export VELLORA_HOME="$CH"
        run import "$WORK/old.txt" notes.txt
        run import "$WORK/old.txt" cloud.txt --cloud-only
        printf 'local edit' >"$CH/drive/notes.txt"
        case "$op" in
            evict) set -- evict notes.txt ;;
            modify) set -- remote modify cloud.txt --text "remote text" ;;
            rename) set -- remote rename cloud.txt moved.txt ;;
            import) set -- import "$WORK/old.txt" again.txt ;;
        esac
        # In a shell of its own, so that the kill is not reported on this one's standard error.
        VELLORA_CRASH_AT=$step sh -c '"$@" >/dev/null 2>&1' sh "$V" "$@" 2>/dev/null
        crashed=$?
        run status
        check "$op killed at $step: velloractl opens the home again" [ "$rc" = 0 ]
        check "$op killed at $step: the local edit is reachable" \
            [ "$(content_of notes.txt)" = "local edit" ]
        cloud=$(content_of cloud.txt moved.txt)
        check "$op killed at $step: the cloud-only item is whole ($cloud)" \
            [ "$cloud" = "old text" -o "$cloud" = "remote text" ]
        again=$(content_of again.txt)
        check "$op killed at $step: an import is whole or absent ($again)" \
            [ "$again" = "old text" -o \( "$again" = none -a ! -e "$CH/cloud/again.txt" \) ]
        # The next eviction never sends back a version older than the cloud's.
        if [ "$op" = modify ] && [ -f "$CH/drive/cloud.txt" ]; then
            run evict cloud.txt
            check "$op killed at $step: no remote change is undone" [ "$(content_of cloud.txt)" = "$cloud" ]
        fi
        [ "$crashed" = 137 ] || break
        step=$((step + 1))
    done
    check "$op passed crash points ($step) and then finished" [ "$step" -gt 1 -a "$crashed" = 0 ]
done

# --- a full disk changes nothing ---
export VELLORA_HOME="$WORK/full"
run import "$WORK/old.txt" cloud.txt --cloud-only
run import "$WORK/old.txt" local.txt
head -c 200000 /dev/zero >"$WORK/big.bin"
for item in cloud.txt local.txt; do
    # A file size limit plays the full disk: writes past 10 KiB fail.
    (trap '' XFSZ; ulimit -f 20; "$V" remote modify "$item" --from "$WORK/big.bin") >/dev/null 2>&1
    check "remote modify of $item fails on a full disk" [ "$?" = 1 ]
    check "the cloud copy of $item is unchanged" cmp -s "$WORK/old.txt" "$VELLORA_HOME/cloud/$item"
done
check "the placeholder still gives the old size" \
    grep -q '"size": 8,' "$VELLORA_HOME/drive/.cloud.txt.vlcloud"
check "the local copy is unchanged" cmp -s "$WORK/old.txt" "$VELLORA_HOME/drive/local.txt"
export VELLORA_HOME="$H"

if [ "$failures" -ne 0 ]; then
    echo "$failures check(s) failed"
    exit 1
fi
echo "all velloractl checks passed"
