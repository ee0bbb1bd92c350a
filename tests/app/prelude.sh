# shellcheck shell=bash
# shellcheck disable=SC2154,SC2034  # variables of the sessions around it
#
# What every session begins with. $programs is the folder of the programs, $source_folder that of the
# sources.

unset TMPDIR  # sessions that want one set it
export SIGIL_ROOT=$PWD/machine PATH=$programs:$PATH
client=machine/C/ProgramData/KBR-LTD/QuietMIMOSA/HarborLedge

tell_status() {
  if [ "$1" != 0 ]; then echo "[$1]"; fi
}

# A policy with one element, for a scope.
policy() {
  echo "<QuietMIMOSA><HLE><Watermark><PolicyInfos><PolicyInfo ID='1'><ElementIDs><ID>E1</ID>"
  echo "</ElementIDs><PrinterScope>$1</PrinterScope></PolicyInfo></PolicyInfos><Elements><Element"
  echo "ID='E1'><Kind>0</Kind><Name>題</Name><Text>社外秘😀"
  echo "印</Text><Opacity>50</Opacity></Element></Elements></Watermark></HLE></QuietMIMOSA>"
}

# Every file and folder of the machine, or of another folder, with its content and the time of its
# last change.
snapshot() {
  find "${1:-machine}" -printf '%p %T@\n' -type f -exec md5sum {} + | sort
}

sigilctl init machine > output
