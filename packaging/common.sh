# What the packaging scripts share. To be sourced from the root of the sources, with SOURCE_DATE_EPOCH set.
: "${SOURCE_DATE_EPOCH:?}"
export SOURCE_DATE_EPOCH LC_ALL=C.UTF-8 TZ=UTC
umask 022

version=$(sed -n 's/^#define WRENLOW_VERSION_TEXT "\(.*\)"$/\1/p' base/Version.h)

# settle FOLDER: every file of the same age, readable for everybody; only the contents make a difference then.
settle() {
    find "$1" -type d -exec chmod 755 {} +
    find "$1" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
}

# The texts that go with every download, into FOLDER; lines end as Windows' Notepad of old needs it.
add_texts() {
    packaging/render-manual "$1/manual"
    for text in LICENSE CHANGELOG.md packaging/third-party.txt; do
        local name
        name=$(basename "$text" .md)
        sed 's/$/\r/' "$text" >"$1/${name%.txt}.txt"
    done
}
