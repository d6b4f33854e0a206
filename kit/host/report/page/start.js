'use strict';

showLog();
showLists();
addNav('files', 'Files');

// A link to a part opens it.
function openTarget() {
  const target = document.getElementById(location.hash.slice(1));
  if (target && target.renderOnce) {
    unfold(target);
    target.querySelector('summary').focus();
  }
}
addEventListener('hashchange', openTarget);
openTarget();

// Paper has everything open, but for what paged() leaves out and says so.
let opened = [];
addEventListener('beforeprint', () => {
  for (;;) {
    const closed = document.querySelectorAll('details:not([open])');
    if (closed.length === 0) break;
    for (const details of closed) {
      if (details.renderOnce) details.renderOnce();
      details.open = true;
      opened.push(details);
    }
  }
});
addEventListener('afterprint', () => {
  for (const details of opened) details.open = false;
  opened = [];
});
