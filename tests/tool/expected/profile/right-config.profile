<config version="3">
  <rights video="on" dataconf="on" recording="off"/>
  <codecs audio="opus,g722,pcma" video="h264"/>
</config>