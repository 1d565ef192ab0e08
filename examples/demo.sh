#!/bin/sh
# Shows the main job on a machine of its own:
#   demo.sh BUILD                  with what was built there
#   demo.sh --installed [FOLDER]   with what is installed (brevikctl, pkg-config and a C compiler
#                                  have to be there); the machine is made in FOLDER. What is
#                                  installed has to know the development keys
set -eu
examples=$(cd "$(dirname "$0")" && pwd)
case "${1:-}" in
"")
    echo "usage: demo.sh BUILD | --installed [FOLDER]" >&2
    exit 2
    ;;
--installed)
    folder=$(cd "${2:-.}" && pwd)
    tool=brevikctl
    hosts=$folder/demo-hosts
    private_key=$examples/keys/DEVELOPMENT-ONLY-private-key.txt
    [ -r "$private_key" ] || {
        echo "demo.sh: what is installed has keys of its own, and the demo cannot sign with them" >&2
        exit 1
    }
    mkdir -p "$hosts"
    for host in host product; do
        ${CC:-cc} -o "$hosts/${host}_c" "$examples/$host.c" $(pkg-config --cflags --libs brevikconfig)
    done
    ;;
*)
    folder=$(cd "$1" && pwd)
    tool=$folder/tools/brevikctl/brevikctl
    hosts=$folder/examples
    private_key=$examples/../keys/DEVELOPMENT-ONLY-private-key.txt
    ;;
esac
machine=$folder/demo-machine
rm -rf "$machine"
BREVIK_MACHINE=$machine
export BREVIK_MACHINE
programs="$machine/drives/c/Program Files/Harbor"
studio_guid={5D0A7C11-3E42-4C0B-9B1E-61F2A2D40001}
player_guid={5D0A7C11-3E42-4C0B-9B1E-61F2A2D40002}

title() { printf '\n== %s\n' "$*"; }
brevikctl() {
    printf "$ brevikctl %s\n" "$*"
    command "$tool" "$@"
}
# Commands whose arguments do not matter to the reader.
quietly() { command "$tool" "$@" >/dev/null; }

title "A machine: the folder that holds what Windows keeps about a computer"
brevikctl machine create

title "Two products are signed and installed, one in German and one in French"
for product in studio player; do
    mkdir -p "$programs/$product"
    cp "$hosts/product_c" "$programs/$product/$product"
    quietly certificate sign "$examples/certificates/$product.txt" \
        --key "$private_key" -o "$machine/$product.qzc"
done
quietly certificate install "$machine/studio.qzc" --guid "$studio_guid" --language 1031 \
    --beside "$programs/studio"
quietly certificate install "$machine/player.qzc" --guid "$player_guid" --language 1036 \
    --beside "$programs/player"
brevikctl certificate list

title "The first program asks who it is, which language to run in, and for an item of the other"
"$programs/studio/studio" "harbor player" SKUName

title "The same questions from the command line"
brevikctl item --guid "$studio_guid" QDR_EnhancedProductDisplayName
brevikctl item --product "Harbor Listener" QDR_DialogWidth
brevikctl language --ids 1033,1031,1036

title "The database that all programs of the machine share is not readable from outside"
head -c 16 "$machine/drives/c/ProgramData/Velmar/qzc13.db" | od -An -tx1

title "A value in the suite's cookie, where every web client of the user finds it"
"$hosts/host_c"
brevikctl cookie list

title "What the library says about one call (BREVIK_DEBUG_OUTPUT=-)"
BREVIK_DEBUG_OUTPUT=- "$programs/studio/studio" "Harbor Player" SKUName 2>&1 |
    tr -d '\r' | sed -n '/BrevikKitAPI bvkc_CertificateItemValueByProdName/,/return/p'

title "One byte of a certificate is changed, and the database made anew"
certificate="$programs/studio/studio.qzc"
printf 'X' | dd of="$certificate" bs=1 seek=60 conv=notrunc status=none
brevikctl database rebuild || true
"$programs/studio/studio" "Harbor Studio" SKUName || true
brevikctl certificate check "$studio_guid" || true

printf '\nThe machine of this demo: %s\n' "$machine"
