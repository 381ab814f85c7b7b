#!/usr/bin/env bash
# The manual page of zyngrad, made from the help texts of its commands.
#   man_page.sh ZYNGRAD VERSION > zyngrad.1
set -euo pipefail
zyngrad=$1 version=$2

# Verbatim text: no macro, no escape, and hyphens that can be copied.
verbatim() {
  echo ".nf"
  sed -e 's/\\/\\e/g' -e 's/-/\\-/g' -e "s/^\([.']\)/\\\\\&\1/"
  echo ".fi"
}

commands() { "$zyngrad" --help | awk '/^Subcommands:/ {inside = 1; next} inside && NF == 0 {inside = 0} inside && /^  [a-z]/ {print $1}'; }

cat <<END
.TH ZYNGRAD 1 "" "Zyn3dGradOp $version" "User Commands"
.SH NAME
zyngrad \- gradients and interpolation of fields on finite\-volume meshes, with their errors
.SH SYNOPSIS
.B zyngrad
.I COMMAND
.RI [ OPTION ]...
.br
.B zyngrad
.I COMMAND
.B \-\-help
.br
.B mpirun \-n
.I RANKS
.B zyngrad
.I COMMAND
.RI [ OPTION ]...
.SH DESCRIPTION
Runs the operators of Zyn3dGradOp on a mesh and measures how accurate each method is there.
.PP
END
"$zyngrad" --help | verbatim
echo ".SH COMMANDS"
for command in $(commands); do
  echo ".SS $command"
  "$zyngrad" "$command" --help | verbatim
done
cat <<'END'
.SH EXIT STATUS
0 on success; 2 for wrong input, with one line on standard error. The help of a command explains its other codes.
.SH SEE ALSO
.BR mpirun (1)
END
