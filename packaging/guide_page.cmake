# Sets one page of the user guide: cmake -DPAGE=… -DHTML=… -DCMARK=… -P guide_page.cmake
execute_process(COMMAND "${CMARK}" --unsafe -e table "${PAGE}" OUTPUT_VARIABLE body COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "href=\"([a-z-]+)\\.md" "href=\"\\1.html" body "${body}")
string(REPLACE "src=\"../pictures/" "src=\"pictures/" body "${body}")
file(WRITE "${HTML}" "<!doctype html>
<html lang=\"en\"><head><meta charset=\"utf-8\"><title>Ostra</title>
<meta name=\"viewport\" content=\"width=device-width\">
<style>
body{max-width:42rem;margin:3rem auto;padding:0 1.2rem;font:16px/1.6 Inter,system-ui,sans-serif;background:#100f0d;color:#d6d0c2}
h1,h2,h3{color:#ece7da;line-height:1.25}a{color:#ff6a60}img{max-width:100%;border:1px solid #2c2823}
code,kbd{font-family:\"IBM Plex Mono\",monospace;font-size:.92em;background:#211e1a;padding:.1em .3em}
</style></head><body>
${body}</body></html>
")
