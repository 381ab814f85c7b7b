# Writes measured blocks into a page: the lines of FOLDER/NAME replace those between "<!-- measured NAME -->" and
# "<!-- /measured -->". An unknown NAME is an error.
#   awk -v blocks=FOLDER -f put_blocks.awk PAGE
/^<!-- \/measured -->$/ { inside = 0 }
!inside { print }
/^<!-- measured [a-z-]+ -->$/ {
  inside = 1
  file = blocks "/" $3
  print ""
  if ((getline line < file) < 0) { print "no run gives " $3 > "/dev/stderr"; exit 1 }
  do print line; while ((getline line < file) > 0)
  print ""
}
