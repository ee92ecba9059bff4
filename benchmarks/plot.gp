# Draws the data that report.py wrote to `folder` into the file `picture`.

set terminal svg size 1000,900 dynamic font "sans-serif,13" background "#ffffff"
set output picture
set multiplot

array color[5] = ["#0072b2", "#009e73", "#d55e00", "#cc79a7", "#5b5b5b"]
lines = folder . "/lines.dat"
ratios = folder . "/ratios.dat"

set border 3 linecolor "#404040"
set tics nomirror

# Times as a function of the document's size.
set title "Processor time of opening a document and of loading it as a whole"
set origin 0, 0.5
set size 1, 0.5
set lmargin 10
set logscale xy
set xrange [0.05:*]
set xlabel "size of the document in MB"
set ylabel "milliseconds"
set format "%g"
set grid linecolor "#d8d8d8"
set key outside right center samplen 3 spacing 1.3
plot for [i = 0:4] lines index i using 1:3 with linespoints linewidth 2 pointtype 7 pointsize 0.6 \
         linecolor rgb color[i + 1] title columnheader(1), \
     for [i = 0:4] lines index i using 1:2 with lines linewidth 2 dashtype 2 linecolor rgb color[i + 1] notitle, \
     NaN with lines linewidth 2 linecolor "#404040" title "load", \
     NaN with lines linewidth 2 dashtype 2 linecolor "#404040" title "the DOM's open"
unset logscale
unset format
unset ylabel
unset grid

# Ratios, with those of Assimp if it was measured, and a line where a load costs as much as an open.
stats ratios using 2 nooutput
count = STATS_records
set grid xtics linecolor "#d8d8d8"
set style fill solid 0.9 noborder
set xrange [0:*]
set yrange [count - 0.4 : -0.6]
set ytics scale 0
set arrow 1 from 1, graph 0 to 1, graph 1 nohead dashtype 3 linewidth 1.5 linecolor "#404040"
set key at graph 1, 1.14 samplen 2
set xlabel "load / open"

set origin 0, 0
set size 0.6, 0.5
set lmargin 28
set title "Processor time"
plot ratios using ($2 / 2):0:($2 / 2):(0.35):yticlabels(1) with boxxyerror linecolor rgb color[1] notitle, \
     ratios using 3:($0 - 0.42):(0):(0.84) with vectors nohead linewidth 3 linecolor "#000000" title "Assimp"

set origin 0.6, 0
set size 0.4, 0.5
set lmargin 3
set format y ""
set title "Peak memory"
plot ratios using ($4 / 2):0:($4 / 2):(0.35) with boxxyerror linecolor rgb color[2] notitle, \
     ratios using 5:($0 - 0.42):(0):(0.84) with vectors nohead linewidth 3 linecolor "#000000" title "Assimp"

unset multiplot
