#!/usr/bin/env bash
# The DLL exports exactly the eight functions, undecorated, and imports
# nothing but Windows system DLLs.
#   check-exports.sh <Zemblax.dll> [objdump]
set -u
dll=$1 objdump=${2:-objdump}
want="ZEMBLAX_CheckVersion ZEMBLAX_Configure ZEMBLAX_GetNext ZEMBLAX_GetState ZEMBLAX_Initialize ZEMBLAX_Start ZEMBLAX_Stop ZEMBLAX_Uninitialize"
dump=$("$objdump" -p "$dll") || { echo "cannot read $dll"; exit 1; }
got=$(echo "$dump" | awk '/\[Ordinal\/Name Pointer\] Table/{t=1;next} t&&/^[ \t]*\[/{print $NF;next} t&&!/^[ \t]*\[/{t=0}' | sort | tr '\n' ' ' | sed 's/ $//')
status=0
if [ "$got" != "$want" ]; then
  echo "exports differ: got '$got'"; status=1
else
  echo "exports: $got"
fi
imports=$(echo "$dump" | awk '/DLL Name:/{print tolower($3)}' | sort -u | tr '\n' ' ')
echo "imports: $imports"
for d in $imports; do
  case $d in
    kernel32.dll|user32.dll|gdi32.dll|comctl32.dll|ole32.dll|oleaut32.dll|advapi32.dll|msvcrt.dll|shell32.dll|api-ms-win-*) ;;
    *) echo "not a system DLL: $d"; status=1 ;;
  esac
done
exit $status
