// Reads the sweep and shows it. Whatever is drawn on a canvas is in `pictures`, which are drawn anew when colours change.
const pictures = [];

function showSweep(sweep) {
  sweepOfPage = sweep;
  document.title = `Sweep of ${sweep.title}`;
  byId("title").textContent = document.title;
  showFacts(sweep);
  showVerdict(sweep);
  const drawn = [showBest(sweep)];
  showDistribution(sweep);
  byId("maps-section").hidden = sweep.dimensions.length === 0;
  byId("parallel-section").hidden = sweep.dimensions.length === 0;
  if (sweep.dimensions.length > 0) {
    const maps = new Maps(sweep);
    show("maps", maps.element);
    maps.drawing.repaint();
    drawn.push({repaint: () => maps.drawing.repaint()}, showParallel(sweep));
  }
  drawn.push(showScatter(sweep), showWalk(sweep));
  showRuns(sweep);
  pictures.push(...drawn.filter(Boolean));
  for (const picture of pictures) picture.repaint();
}

startPage(() => showSweep(new Sweep(readBlock("sweep"))), () => pictures.forEach(picture => picture.repaint()));
